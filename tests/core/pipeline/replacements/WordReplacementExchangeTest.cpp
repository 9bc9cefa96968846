// Lists as people bring them along, and as they take them away.

#include "core/pipeline/replacements/exchange/WordReplacementExchange.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace std::string_literals;
using Timing = WordReplacementTiming;

namespace {

/// The entries without their identities.
std::vector<WordReplacement> anonymous(std::vector<WordReplacement> list)
{
    for (auto& entry : list)
        entry.id = {};
    return list;
}

std::string errorsOf(std::string_view text)
{
    const auto read = readReplacements(text);
    std::string lines;
    if (!read) {
        for (const auto& error : read.error())
            lines += toString(error) + '\n';
    }
    return lines;
}

const std::vector<WordReplacement> kList = {
    {Uuid::random(), "colour, colur", "color"},
    {Uuid::random(), R"((\d+) "euros?")", "$1\t€\\n;\r\nnext, \"line\"", true, Timing::afterAI},
    {Uuid::random(), " =1+1", "", false, Timing::both},
    {Uuid::random(), "東京", " Tokyo "},
};

TEST(WordReplacementExchange, WhatIsWrittenIsReadBackAsItWas)
{
    const auto csv = writeReplacements(kList, ReplacementFormat::csv);
    EXPECT_EQ(csv.substr(0, csv.find("\r\n", 60)), "original,replacement,isRegex,timing\r\n"
                                                   "\"colour, colur\",\"color\",false,beforeAI");
    EXPECT_EQ(anonymous(readReplacements(csv).value()), anonymous(kList));
    EXPECT_EQ(readReplacements(writeReplacements(kList, ReplacementFormat::json)).value(), kList);
    for (const auto format : {ReplacementFormat::csv, ReplacementFormat::json})
        EXPECT_TRUE(readReplacements(writeReplacements({}, format), format).value().empty());
    EXPECT_TRUE(readReplacements("").value().empty());
}

TEST(WordReplacementExchange, TablesOfAnySpreadsheetAreRead)
{
    const std::vector<WordReplacement> expected = {{{}, "colour, colur", "color"}, {{}, "a+", "b", true, Timing::both}};
    for (const auto& table : {
             "\"colour, colur\",color\na+,b,true,both"s,
             "\xEF\xBB\xBForiginal;replacement;isRegex;timing\r\ncolour, colur;color;;\r\na+;b;TRUE;Both\r\n"s,
             "colour, colur;color\r\n\r\n;;;\r\n\"a+\";b;1;both;more\r\n"s,
             "Timing\tReplacement\tNotes\tOriginal\tisregex\n\tcolor\tx\tcolour, colur\tno\nboth\tb\t\ta+\tyes\n"s,
             "replacement,original,isRegex,timing\rcolor,\"colour, colur\",false,beforeAI\rb,a+,true,both\r"s,
         })
        EXPECT_EQ(anonymous(readReplacements(table).value()), expected) << table;
    EXPECT_EQ(readReplacements("a,\"b\r\n\"\"c\"\"\"").value()[0].replacement, "b\r\n\"c\"");
    const auto read = readReplacements("a,b\nc,d").value();
    EXPECT_FALSE(read[0].id.isNil());
    EXPECT_NE(read[0].id, read[1].id);
}

TEST(WordReplacementExchange, JsonMayLackWhatHasADefaultAndMayBeAWholeSettingsFile)
{
    const std::vector<WordReplacement> expected = {{{}, "a", "b"}, {{}, "c", "d", true, Timing::afterAI}};
    const std::string list = R"([{"original": "a", "replacement": "b"},
                                 {"original": "c", "replacement": "d", "isRegex": true, "timing": "afterAI"}])";
    EXPECT_EQ(anonymous(readReplacements(list).value()), expected);
    EXPECT_EQ(anonymous(readReplacements(R"({"playSound": true, "wordReplacements": )" + list + "}").value()),
              expected);
}

TEST(WordReplacementExchange, DamagedListsSayWhatIsWrongAndWhere)
{
    const struct {
        std::string text;
        std::string part;
    } kCases[] = {
        {"a,b\nc,\"d\ne", "Line 2, column 3: This is no valid table: a field begins with a quotation mark"},
        {"a,b\nöü\"c,d", "Line 2, column 3: This is no valid table: a quotation mark must"},
        {"a,b\n\"c\"d,e", "Line 2, column 4"},
        {"a,b\n\"x\r\ny\",z,maybe\n", "Line 3, column 6: isRegex is \"maybe\""},
        {"a,b\nlonely\n", "Line 2, column 1: The replacement is missing"},
        {"original,timing\na,both", "names no column \"replacement\""},
        {"a,b,false,never", "Line 1, column 11: timing is \"never\""},
        {"a,b\n(c,d,true\n", "Line 2, column 1: \"(c\" cannot be used, since it is not a valid regular expression"},
        {",b", "Line 1, column 1: \"\" cannot be used, since it has nothing to look for"},
        {"a,b\nc,d\xE4", "Line 2, column 4: This is not text in UTF-8"},
        {"\xFF\xFE"s + "a\0,\0b\0"s, "This is not text in UTF-8"},
        {"[{\"original\": \"a\",\n \"replacement\" \"b\"}]", "line 2, column 18"},
        {R"([{"original": "a", "replacement": "b"}, {"original": "c"}])", "Entry 2: replacement: missing"},
        {R"([{"original": "a", "replacement": "b", "timing": "never"}])", "Entry 1: timing"},
        {R"([{"original": "[", "replacement": "b", "isRegex": true}])", "Entry 1: \"[\" cannot be used"},
        {R"({"list": []})", "holds no list"},
        {"[1]", "Entry 1"},
    };
    for (const auto& [text, part] : kCases)
        EXPECT_NE(errorsOf(text).find(part), std::string::npos) << text << '\n' << errorsOf(text);
    EXPECT_EQ(errorsOf("a\nb,c,d\n").find("Line 2, column 5: isRegex"), errorsOf("a\nb,c,d\n").find("Line 2"))
        << "all faults are told";
}

TEST(WordReplacementExchange, MergingKeepsPlacesAndIdentities)
{
    const auto [list, added, changed, unchanged] =
        merged(kList, {{kList[1].id, "colour, colur", "Farbe"},
                       kList[2],
                       {kList[0].id, "colour, colur", "color", true},
                       {Uuid::random(), "東京", "Tokio", false, Timing::afterAI}});
    EXPECT_EQ(added, 2u);
    EXPECT_EQ(changed, 1u);
    EXPECT_EQ(unchanged, 1u);
    ASSERT_EQ(list.size(), 6u);
    EXPECT_EQ(list[0], (WordReplacement{kList[0].id, "colour, colur", "Farbe"}));
    EXPECT_EQ(list[1], kList[1]);
    EXPECT_NE(list[4].id, kList[0].id) << "two entries never have one identity";
}

} // namespace
