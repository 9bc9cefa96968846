#include "tests/core/pipeline/scripts/ScriptFixture.h"

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using namespace std::string_literals;

namespace {

using BashResult = BashScriptService::BashResult;
using Notes = std::vector<DiagnosticRecord>;

using ScriptService = ScriptFixture;

TEST_F(ScriptService, YieldsWhatTheScriptPrintedAsText)
{
    const struct {
        std::string script;
        std::string input;
        BashResult result;
    } kCases[] = {
        {"cat", "größer\n", {"größer\n", "", 0}},
        {"print -rn -- \"${(U)$(cat)}\"", "äöü", {"ÄÖÜ", "", 0}}, // zsh and no other shell
        {"printf 'a\\377b\\0c'; printf '\\300' >&2; exit 7", "", {"a\uFFFDb\0c"s, "\uFFFD", 7}},
        {"wc -c", "a\0b\xff"s, {"4\n", "", 0}},
    };
    for (const auto& [script, input, result] : kCases)
        EXPECT_EQ(await(service.run(input, script, 15)), result) << script;
}

TEST_F(ScriptService, IsALoginShellWhereTheSettingSaysSoWhenTheScriptStarts)
{
    const std::string script = "[[ -o login ]] && print yes || print no";
    EXPECT_EQ(await(service.run("", script, 15))->output, "no\n");
    storage.useLoginShellForScripts.set(true);
    const auto login = await(service.run("", script, 15))->output;
    EXPECT_TRUE(login.ends_with("yes\n")) << login; // a profile may print, too
}

using ScriptStep = ScriptFixture;

TEST_F(ScriptStep, WhatAScriptPrintsBecomesTheTranscriptAndSilenceEndsTheRun)
{
    const struct {
        std::string script;
        std::string transcript;
        bool endsTheRun;
        Notes notes;
        std::string reason;
    } kCases[] = {
        {" \n\t", "words", false, {}, ""},
        {"sed s/words/deeds/; print -n '\n \n'", "deeds", false, {{"bash_script", "deeds\n \n"}}, ""},
        {"print kept; print -u2 oh; exit 9",
         "kept",
         false,
         {{"bash_script", "kept\n"}, {"bash_script_error", "oh\n"}, {"bash_script_status", "9"}},
         ""},
        {"cat >/dev/null",
         "words",
         true,
         {},
         "The script before the AI of the prompt \"Tidy\" printed nothing, so nothing was inserted."},
        {"print",
         "words",
         true,
         {{"bash_script", "\n"}},
         "The script before the AI of the prompt \"Tidy\" printed nothing, so nothing was inserted."},
        {"print -u2 'not this way'; exit 3",
         "words",
         true,
         {{"bash_script_error", "not this way\n"}, {"bash_script_status", "3"}},
         "The script before the AI of the prompt \"Tidy\" failed (status 3: not this way) and printed nothing, so "
         "nothing was "
         "inserted."},
    };
    context.historyEntry = HistoryEntry{}; // it has the words
    for (const auto& [script, transcript, endsTheRun, notes, reason] : kCases) {
        use(script);
        context.transcript = "words";
        EXPECT_EQ(await(before.run(context)), endsTheRun) << script;
        EXPECT_EQ(context.transcript, transcript);
        EXPECT_EQ(context.diagnostics, notes) << script;
        EXPECT_EQ(context.endReason, reason);
    }
    EXPECT_TRUE(notices.shown.empty());
}

TEST_F(ScriptStep, ABrokenScriptThatEndsTheRunIsToldFromOneThatMeantTo)
{
    for (const int status : {3, 0}) {
        context.hasEndedInFailure = false;
        use("exit " + std::to_string(status));
        EXPECT_EQ(await(before.run(context)), true);
        EXPECT_EQ(context.hasEndedInFailure, status != 0);
    }
}

TEST_F(ScriptStep, EachStageRunsItsOwnScriptAndSaysSoInTheLog)
{
    use("print one", "print two");
    EXPECT_EQ(await(after.run(context)), false);
    EXPECT_EQ(context.transcript, "two");
    EXPECT_EQ(context.diagnostics, (Notes{{"post_bash_script", "two\n"}}));
    EXPECT_EQ(await(before.run(context)), false);
    EXPECT_EQ(context.transcript, "one");
    use("true");
    EXPECT_EQ(await(before.run(context)), true);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{
                               "Executing bash script for transcript post-processing",
                               "Bash script successfully processed transcript during post-processing",
                               "Executing bash script for transcript pre-processing",
                               "Bash script successfully processed transcript during pre-processing",
                               "Executing bash script for transcript pre-processing",
                               "Bash script produced no output during pre-processing. Stopping pipeline",
                           }));
    context.activationMode = VoiceJournal{};
    EXPECT_EQ(await(before.run(context)), false);
    EXPECT_EQ(log.lines().size(), 6u) << "the journal has no prompt, and so no script";
}

TEST_F(ScriptStep, AScriptThatTakesTooLongIsEndedAndLeavesTheText)
{
    use("", "print half; touch '" + (folder / "begun").string() + "'; sleep 20; print whole");
    context.transcript = "words";
    std::optional<Result<bool, StepFailure>> ended;
    TaskScope scope;
    scope.start(storeResult(after.run(context), ended));
    runUntil([&] { return std::filesystem::exists(folder / "begun"); });
    clock.advance(14'999ms);
    drainMainThread();
    EXPECT_FALSE(ended);
    clock.advance(1ms);
    runUntil([&] { return ended.has_value(); });
    EXPECT_EQ(*ended, false);
    EXPECT_EQ(context.transcript, "words");
    EXPECT_TRUE(log.has("Bash script timed out after 15 seconds"));
    EXPECT_TRUE(log.has("Bash script timed out during post-processing. Continuing with original transcript"));
    const std::string told = "The script after the AI of the prompt \"Tidy\" took longer than 15 seconds and was "
                             "ended. The text was left as it was.";
    EXPECT_EQ(notices.shown, std::vector<std::string>{told});
    EXPECT_EQ(context.diagnostics, (Notes{{"post_bash_script", "half\n"}, {"post_bash_script_problem", told}}));
}

TEST_F(ScriptStep, AScriptThatCannotStartLeavesTheText)
{
    use("print a\0b"s);
    context.transcript = "words";
    EXPECT_EQ(await(before.run(context)), false);
    EXPECT_EQ(context.transcript, "words");
    EXPECT_TRUE(log.has("Failed to execute bash script: /bin/zsh: An argument contains a NUL character"));
    EXPECT_EQ(notices.shown,
              std::vector<std::string>{
                  "The script before the AI of the prompt \"Tidy\" could not be started (/bin/zsh: An argument "
                  "contains a NUL character). The text was left as it was."});
}

TEST_F(ScriptStep, AStopEndsTheScriptAndLeavesTheText)
{
    const auto file = folder / "id";
    use("print $$ > '" + file.string() + "'; print other; sleep 60");
    context.transcript = "words";
    std::optional<Result<bool, StepFailure>> ended;
    TaskScope scope;
    scope.start(storeResult(before.run(context), ended));
    runUntil([&] { return std::filesystem::exists(file) && readFile(file).ends_with('\n'); });
    scope.requestStop();
    runUntil([&] { return scope.isEmpty(); });
    EXPECT_FALSE(ended->has_value());
    EXPECT_EQ(context.transcript, "words");
    EXPECT_NE(::kill(std::stoi(readFile(file)), 0), 0) << "it is gone";
    EXPECT_TRUE(notices.shown.empty());
}

} // namespace
