#include "bench/Median.h"
#include "tests/support/PlainCommandMatcher.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <random>
#include <string>
#include <vector>

/// Looking for a spoken command in a long dictation must cost nothing that anybody notices: for 200 commands of three
/// phrases and a transcript of 2,000 characters, at most a twentieth of what comparing every window with every phrase
/// takes, with the same answer.
namespace {

using namespace vocalith;

constexpr double kLimit = 0.05;
constexpr int kRounds = 5;
constexpr std::size_t kCommands = 200;
constexpr std::size_t kTranscript = 2000;

constexpr const char* kWords[] = {"open",   "mail",     "the",   "calendar", "show", "me",      "next", "meeting",
                                  "please", "document", "start", "editor",   "and",  "lights",  "off",  "window",
                                  "report", "quarter",  "write", "about",    "in",   "kitchen", "to",   "play"};

std::string sentence(std::mt19937& random, std::size_t length)
{
    std::string text;
    while (text.size() < length)
        text += std::string(text.empty() ? "" : " ") + kWords[random() % std::size(kWords)];
    text.resize(length);
    return text;
}

std::vector<QuickCommandDefinition> someCommands(std::mt19937& random)
{
    std::vector<QuickCommandDefinition> commands;
    for (std::size_t i = 0; i < kCommands; ++i) {
        commands.push_back({Uuid::random(), {}, quick_command_action::RunShortcut{"shortcut"}});
        for (int j = 0; j < 3; ++j)
            commands.back().triggerPhrases.push_back("vocalith " + sentence(random, 8 + random() % 16));
    }
    return commands;
}

/// The processor time of this thread: other programs on the machine do not count.
double cpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <class Work>
double secondsOf(Work work)
{
    const double start = cpuSeconds();
    work();
    return cpuSeconds() - start;
}

/// Whether both find the same, and in the time allowed.
bool compare(const char* name, const std::string& transcript, const std::vector<QuickCommandDefinition>& commands)
{
    std::vector<double> ratios;
    std::vector<double> times;
    std::optional<CommandMatch> found;
    std::optional<CommandMatch> plain;
    for (int round = 0; round < kRounds; ++round) {
        const double plainTime = secondsOf([&] { plain = test::PlainCommandMatcher::match(transcript, commands); });
        times.push_back(secondsOf([&] { found = CommandMatcher().match(transcript, commands); }));
        ratios.push_back(times.back() / plainTime);
    }
    const double ratio = bench::median(ratios);
    std::printf("quick commands, %s: ratio %.4f (limit %.2f), %.2f ms\n", name, ratio, kLimit,
                bench::median(times) * 1000);
    if (found != plain)
        std::printf("quick commands, %s: the answer is another one\n", name);
    return found == plain && ratio <= kLimit;
}

} // namespace

int main()
{
    std::mt19937 random(20260301);
    const auto commands = someCommands(random);
    const auto dictation = sentence(random, kTranscript);
    auto misheard = commands[kCommands / 2].triggerPhrases[1];
    misheard[0] = 'f'; // as a recogniser might have it
    const auto around = sentence(random, (kTranscript - misheard.size()) / 2);
    const auto command = around + misheard + around;
    const bool isMissedInTime = compare("none said", dictation, commands);
    const bool isFoundInTime = compare("one said", command, commands);
    return isMissedInTime && isFoundInTime ? 0 : 1;
}
