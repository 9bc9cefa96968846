#include "app/cli/text/ColumnText.h"
#include "app/cli/history/text/HistoryDates.h"
#include "app/cli/history/text/HistoryOutput.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

using namespace vocalith;

namespace {

TEST(ColumnText, IsCutAtWholeCharactersAsATerminalCountsThem)
{
    struct Case {
        std::string text;
        std::size_t columns;
        std::string fitted;
    };
    const std::vector<Case> cases = {
        {"", 5, ""},
        {"words", 5, "words"},
        {"words!", 5, "word…"},
        {"two words", 5, "two…"},
        {"数学数学", 8, "数学数学"},
        {"数学数学", 7, "数学数…"},
        {"数学数学", 6, "数学…"},
        {"e\u0301e\u0301e\u0301", 3, "e\u0301e\u0301e\u0301"},
        {"e\u0301e\u0301e\u0301", 2, "e\u0301…"},
        {"😀😀", 3, "😀…"},
        {"x", 0, ""},
        {std::string(1'000'000, 'x'), 3, "xx…"},
    };
    for (const auto& testCase : cases) {
        const auto text = fitted(testCase.text, testCase.columns);
        EXPECT_EQ(text, testCase.fitted);
        EXPECT_LE(columnsOf(text), testCase.columns);
    }
}

TEST(HistoryOutput, NothingThatATerminalObeysIsLeft)
{
    EXPECT_EQ(withoutControlCharacters("{\n  \"text\": \"a\x1b[31mb\xC2\x9B"
                                       "2Jc\x07\"\r\n\n}\n"),
              "{\n  \"text\": \"a[31mb2Jc\"\n\n}\n");
    EXPECT_EQ(withoutControlCharacters("\xff\n   "), "\uFFFD\n   ");
}

TEST(HistoryDates, DurationsThatNoRecordingHasAreStillShort)
{
    struct Case {
        double seconds;
        const char* text;
    };
    for (const auto& [seconds, text] : std::vector<Case>{{0, "0:00"},
                                                         {59.4, "0:59"},
                                                         {59.6, "1:00"},
                                                         {3599.6, "1:00:00"},
                                                         {-3, "0:00"},
                                                         {std::numeric_limits<double>::quiet_NaN(), "0:00"}})
        EXPECT_EQ(durationText(seconds), text);
}

} // namespace
