#include "app/cli/completion/CompletionScript.h"

#include "app/cli/CommandLine.h"

#include <gtest/gtest.h>

#include <QProcess>

#include <variant>

using namespace vocalith;

namespace {

std::string script(const char* shell)
{
    const char* words[] = {"vocalith", "completion", shell};
    const auto command = parseCommandLine(3, words);
    return command ? completionScript(std::get<CompletionOptions>(*command)) : "";
}

/// What bash offers after these words, the last of which is being typed; the program itself is played by a function.
std::string offered(const std::string& words)
{
    const auto line = script("bash") + R"(
vocalith() {
    case "$*" in
    "settings list --keys") printf '%s\n' playSound whisperThreads whisperPrompt ;;
    "settings list --words playSound") printf '%s\n' true false ;;
    *) echo "asked: $*" ;;
    esac
}
COMP_WORDS=(vocalith )" +
                      words + R"()
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
_vocalith
echo "${COMPREPLY[*]}"
)";
    QProcess bash;
    bash.start("bash", {"--norc", "-c", QString::fromStdString(line)});
    EXPECT_TRUE(bash.waitForFinished());
    EXPECT_EQ(bash.readAllStandardError().toStdString(), "");
    return bash.readAllStandardOutput().trimmed().toStdString();
}

TEST(CompletionScript, BashOffersWhatCanFollow)
{
    const struct {
        const char* words;
        const char* offered;
    } cases[] = {
        {"se", "settings"},
        {"settings ex", "export"},
        {"settings set wh", "whisperThreads whisperPrompt"},
        {"settings set playSound ''", "true false"},
        {"settings set playSound true ''", ""},
        {"settings reset playSound whisperT", "whisperThreads"},
        {"settings get --show", "--show-secrets"},
        {"settings get --json pl", "playSound"},
        {"completion ''", "bash fish zsh"},
        {"transcribe ''", ""}, // files, which bash knows
        {"transcribe --f", "--format --force"},
    };
    for (const auto& [words, expected] : cases)
        EXPECT_EQ(offered(words), expected) << words;
}

TEST(CompletionScript, EveryShellKnowsEveryCommand)
{
    for (const auto* shell : {"bash", "zsh", "fish"}) {
        for (const auto* part : {"dictate", "transcribe", "\"settings import\"", "--show-secrets", "list --keys"})
            EXPECT_NE(script(shell).find(part), std::string::npos) << shell << ": " << part;
    }
    EXPECT_EQ(script("tcsh"), "");
}

} // namespace
