// What becomes of a text: matching, what is written, and what is skipped.

#include "core/pipeline/replacements/WordReplacementRules.h"

#include "tests/support/RecordedLog.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::string_literals;

namespace {

WordReplacement plain(std::string original, std::string replacement)
{
    return {Uuid::random(), std::move(original), std::move(replacement)};
}

WordReplacement regex(std::string original, std::string replacement)
{
    return {Uuid::random(), std::move(original), std::move(replacement), true};
}

class WordReplacementRules : public testing::Test {
protected:
    std::string apply(const std::vector<WordReplacement>& list, std::string text)
    {
        applied = applyReplacements(list, std::move(text), {}, log.logger());
        return applied.result.text;
    }

    RecordedLog log;
    AppliedReplacements applied;
};

TEST_F(WordReplacementRules, PlainEntriesAreFoundAsWholeWordsInAnyCaseOrAnywhereWhereWordsHaveNoSpaces)
{
    const struct {
        std::string original;
        std::string replacement;
        std::string text;
        std::string expected;
    } kCases[] = {
        {"colour", "color", "Colour colours colour.", "color colours color."},
        {" , ,colour,", "color", "a colour, a thing", "a color, a thing"},
        {"colour, colur\n, kulör", "color", "COLUR Kulör colours", "color color colours"},
        {"new york", "NYC", "New York is New Yorker", "NYC is New Yorker"},
        {"e.g.", "for example", "eXg. e.g.x", "eXg. for examplex"}, // a dot is a dot; no boundary follows it alone
        {"Straße", "street", "STRASSE Straßen", "street Straßen"},
        {"cafe", "bar", "cafe\u0301 cafe", "cafe\u0301 bar"}, // a letter with its mark is another word
        {"שלום", "peace", "שלום, שלומות", "peace, שלומות"},
        {"東京", "Tokyo", "東京都と東京", "Tokyo都とTokyo"},
        {"かa", "x", "ほかA", "ほx"},
        {"ไทย", "Thai", "ภาษาไทยดี", "ภาษาThaiดี"},
        {"한국", "Korea", "한국어", "Korea어"},
        {"漢b", "x", "漢B漢b", "xx"},
        {"a\0b"s, "x", "a\0B a"s, "x a"},
        {"", "x", "some text", "some text"},
        {" , ", "x", "some text", "some text"},
        {"very", "", "a very good", "a  good"},
    };
    for (const auto& [original, replacement, text, expected] : kCases)
        EXPECT_EQ(apply({plain(original, replacement)}, text), expected) << original;
    EXPECT_TRUE(log.lines().empty()) << "nothing that people write as a word is a pattern that fails";
}

TEST_F(WordReplacementRules, EveryCharacterOfASpellingStandsForItself)
{
    const std::string signs = R"(a^$.|?*+()[]{}#&-\Q\E/"'`~!@%_=;:<>z)";
    EXPECT_EQ(apply({plain(signs, "x")}, "b " + signs + " b"), "b x b");
    EXPECT_EQ(apply({plain("a.c", "x")}, "abc a.c"), "abc x");
}

TEST_F(WordReplacementRules, TheBlocksOfScriptsWithoutSpacesEndWhereTheyEnd)
{
    for (const auto* inside : {"\u0E00", "\u0E7F", "\u3040", "\u309F", "\u30A0", "\u30FF", "\u4E00", "\u9FFF", "\uAC00",
                               "\uD7AF", "word 한"})
        EXPECT_FALSE(needsWordBoundaries(inside)) << inside;
    for (const auto* outside : {"\u0DFF", "\u0E80", "\u303F", "\u3100", "\u4DFF", "\uA000", "\uABFF", "\uD7B0", "word",
                                "\U00020000", "👍", ""})
        EXPECT_TRUE(needsWordBoundaries(outside)) << outside;
}

TEST_F(WordReplacementRules, WhatIsWrittenFollowsTheTemplateAndADollarThatNamesNothingIsADollar)
{
    const struct {
        std::string replacement;
        std::string expected; // of "price" in "the price!"
    } kCases[] = {
        {R"(line\nbreak)", "line\nbreak"},
        {R"(a\tb)", "a\tb"},
        {R"(a\\b)", R"(a\b)"},
        {R"(a\\nb)", R"(a\nb)"},
        {R"(50\%)", R"(50\%)"},
        {R"(\u0041)", R"(\u0041)"},
        {"end\\", "end\\"},
        {"[$0]", "[price]"},
        {"$05", "price5"},
        {R"(\$0)", "$0"},
        {R"(\\$0)", R"(\price)"},
        {"$5", "$5"},
        {"5$", "5$"},
        {"$$0", "$price"},
        {"US$ ${x} ${", "US$ ${x} ${"},
        {"a\0b"s, "a\0b"s},
    };
    for (const auto& [replacement, expected] : kCases) {
        EXPECT_EQ(apply({plain("price", replacement)}, "the price!"), "the " + expected + "!") << replacement;
        EXPECT_EQ(apply({regex("price", replacement)}, "the price!"), "the " + expected + "!") << replacement;
    }
    EXPECT_EQ(apply({plain("円", R"($0 \$0 a\\b \n)")}, "5円"), "5$0 \\$0 a\\b \n") << "taken literally";
    EXPECT_EQ(apply({regex(R"((\d+) (?<unit>euros?))", "$1 ${unit} $2 $3 $12 ${none}")}, "7 Euros"),
              "7 Euros Euros $3 72 ${none}");
}

TEST_F(WordReplacementRules, EntriesWorkOnWhatThoseBeforeThemHaveMadeAndBadOnesAreSkipped)
{
    EXPECT_EQ(apply({plain("one", "two"), regex("(bad", "x"), regex("", "x"), plain("two", "three three")}, "one TWO"),
              "three three three three");
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "Invalid regex pattern '(bad': a parenthesis has no partner, at character 4 "
                        "(U_REGEX_MISMATCHED_PAREN)");
    EXPECT_EQ(lines[1].find("Invalid regex pattern '': it is empty"), 0u);
    const auto& notes = applied.result.notes;
    ASSERT_EQ(notes.size(), 4u);
    EXPECT_EQ(notes[0], (ReplacementNote{"one", 1, ""}));
    EXPECT_EQ(notes[1].original, "(bad");
    EXPECT_NE(notes[1].problem, "");
    EXPECT_EQ(notes[3], (ReplacementNote{"two", 2, ""}));
    EXPECT_TRUE(applied.givenUp.empty()) << "known when it was typed: no notice for each dictation";
    EXPECT_EQ(apply({regex("^A(.)", "$1")}, "ab\nab"), "b\nab") << "no option but that of the case";
}

TEST_F(WordReplacementRules, APatternWithoutEndAGreedForMemoryAndAGrowingTextAreGivenUpAndTheRestApplies)
{
    const std::string many(5000, 'a');
    const auto text = many + "! colour";
    for (const auto* endless : {"(a+)+$", "(?:a|aa)+$", R"((.*)*\1x)"}) {
        EXPECT_EQ(apply({regex(endless, "x"), plain("colour", "color")}, text), many + "! color") << endless;
        ASSERT_EQ(applied.givenUp.size(), 1u) << endless;
        EXPECT_TRUE(log.has("Invalid regex pattern '"s + endless + "'"));
    }
    const std::string longText(1'000'000, 'a');
    EXPECT_EQ(apply({regex("(?:.|b)*x", "x")}, longText), longText);
    ASSERT_EQ(applied.givenUp.size(), 1u);
    EXPECT_EQ(applied.givenUp[0].problem, "it needs too much memory on this text");

    const std::vector<WordReplacement> doubling(26, regex("[a]+", "$0$0"));
    EXPECT_LE(apply(doubling, "aa").size(), 16'000'000u);
    ASSERT_FALSE(applied.givenUp.empty());
    EXPECT_EQ(applied.givenUp[0].problem, "the text would become too long");
    EXPECT_EQ(apply({plain("a", std::string(100'000, '$'))}, "a b"), std::string(100'000, '$') + " b");
    EXPECT_EQ(apply(std::vector<WordReplacement>(50, regex("(a+)+$", "x")), text), text)
        << "all together take no longer";
}

TEST_F(WordReplacementRules, BytesThatAreNoTextAndPicturesComeOutAsTheyWentIn)
{
    for (const auto& odd : {"\xFF\xFE"s, "\xC3"s, "\xED\xA0\x80"s, "\xF0\x9F\x91"s, "\xC0\x80"s, "\0"s,
                            "👩‍👩‍👧"s, "e\u0301"s, "\uFFFD"s, "\u202Eabc"s}) {
        EXPECT_EQ(apply({plain("colour", "color")}, fmt::format("{0} colour {0}", odd)),
                  fmt::format("{0} color {0}", odd));
        EXPECT_EQ(apply({regex("c(.*)", "$1")}, fmt::format("{0}c{0}", odd)), odd + odd);
    }
    EXPECT_EQ(apply({plain("👍", "good")}, "a👍b"), "agoodb");
    EXPECT_EQ(apply({plain("x", "y")}, ""), "");
}

TEST_F(WordReplacementRules, AStopYieldsTheTextAsItWas)
{
    StopSource source;
    source.request_stop();
    const auto stopped = applyReplacements({plain("a", "b")}, "a", source.get_token(), log.logger());
    EXPECT_EQ(stopped.result.text, "a");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(WordReplacementRules, WhatCanNeverDoAnythingIsToldBeforeItIsKept)
{
    EXPECT_FALSE(whyUnusable(plain("a, b", "")));
    EXPECT_FALSE(whyUnusable(regex("a|b", "")));
    EXPECT_EQ(whyUnusable(plain(" , ", "x")), "it has nothing to look for");
    EXPECT_EQ(whyUnusable(regex("a\nb)", "x")),
              "it is not a valid regular expression: a parenthesis has no partner, at character 2 of line 2");
    for (const auto* bad :
         {"*a", "[a", "[z-a]", "a{2,1}", "a{x", "(?<=a+)b", R"(\2)", R"(\p{Foo})", "(?P<n>a)", "\\", R"(\N{foo})"})
        EXPECT_TRUE(whyUnusable(regex(bad, "x"))) << bad;
    EXPECT_TRUE(whyUnusable(regex(std::string(100'000, '(') + std::string(100'000, ')'), "x"))) << "no crash";
    EXPECT_EQ(spellingsNeverFound(plain("C++, c, .NET, 東京!, naïve", "x")), (std::vector<std::string>{"C++", ".NET"}));
    EXPECT_TRUE(spellingsNeverFound(regex(R"(C\+\+)", "x")).empty());
}

} // namespace
