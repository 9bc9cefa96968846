// A list of 500 plain entries over a transcript of 2,000 words, against the same matches made with ICU directly.

#include "bench/Median.h"
#include "core/pipeline/replacements/WordReplacementRules.h"

#include <unicode/regex.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace vocalith;

constexpr double kLimit = 3;
constexpr int kRounds = 9;
constexpr int kEntries = 500;
constexpr int kWords = 2000;

/// A word of small letters, another one for each number.
std::string word(int number)
{
    std::string letters;
    for (int rest = number + 26; rest > 0; rest /= 26)
        letters += static_cast<char>('a' + rest % 26);
    return "w" + letters;
}

std::vector<WordReplacement> entries()
{
    std::vector<WordReplacement> list;
    for (int i = 0; i < kEntries; ++i)
        list.push_back({Uuid::random(), word(i * 7), "<" + word(i) + ">"});
    return list;
}

std::string transcript()
{
    std::string text;
    for (int i = 0; i < kWords; ++i)
        text += word(i * 37 % 5000) + (i % 12 == 11 ? ". " : " ");
    return text;
}

std::string withICU(const std::vector<WordReplacement>& list, const std::string& transcript)
{
    auto text = icu::UnicodeString::fromUTF8(transcript);
    for (const auto& entry : list) {
        UErrorCode status = U_ZERO_ERROR;
        UParseError where{};
        const auto pattern = icu::UnicodeString::fromUTF8("\\b" + entry.original + "\\b");
        const std::unique_ptr<icu::RegexPattern> compiled(
            icu::RegexPattern::compile(pattern, UREGEX_CASE_INSENSITIVE, where, status));
        const std::unique_ptr<icu::RegexMatcher> matcher(compiled->matcher(text, status));
        text = icu::UnicodeString(matcher->replaceAll(icu::UnicodeString::fromUTF8(entry.replacement), status));
    }
    std::string result;
    return text.toUTF8String(result);
}

/// The processor time of this thread: other programs on the machine do not count.
double cpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <class Work>
double secondsOf(const Work& work)
{
    const double start = cpuSeconds();
    work();
    return cpuSeconds() - start;
}

} // namespace

int main()
{
    const auto list = entries();
    const auto text = transcript();
    const Logger logger;
    std::vector<double> ratios;
    std::vector<double> times;
    for (int round = 0; round < kRounds; ++round) {
        std::string ours;
        std::string theirs;
        // Side by side, so that a busy machine slows both.
        times.push_back(secondsOf([&] { ours = applyReplacements(list, text, {}, logger).result.text; }));
        ratios.push_back(times.back() / secondsOf([&] { theirs = withICU(list, text); }));
        if (ours != theirs || ours == text) {
            std::puts("replacements: the texts differ");
            return 1;
        }
    }
    const double ratio = bench::median(ratios);
    std::printf("replacements: ratio %.2f (limit %.0f), %d entries over %d words in %.1f ms\n", ratio, kLimit, kEntries,
                kWords, bench::median(times) * 1000);
    return ratio <= kLimit ? 0 : 1;
}
