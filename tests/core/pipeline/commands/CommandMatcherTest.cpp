#include "core/pipeline/commands/CommandMatcher.h"

#include "tests/support/PlainCommandMatcher.h"

#include <gtest/gtest.h>

#include <random>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::string_literals;

namespace {

QuickCommandDefinition command(std::vector<std::string> phrases, bool isEnabled = true)
{
    return {Uuid::random(), std::move(phrases), quick_command_action::OpenURL{"https://example.org"}, isEnabled};
}

/// "phrase in window at distance", or nothing.
std::string matched(std::string_view transcript, const std::vector<QuickCommandDefinition>& commands)
{
    const auto match = CommandMatcher().match(transcript, commands);
    return match ? match->phrase + " in " + match->window + " at " + std::to_string(match->distance) : "";
}

TEST(CommandMatcherTest, FindsWhatWasSaidWithoutRegardToCaseAndToPunctuationAroundIt)
{
    const std::vector commands{command({"open mail", "Show my e-mail"}), command({"calendar"})};
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"Open Mail.", "open mail in open mail at 0"},
        {"  \"Open mail!?\" \n", "open mail in open mail at 0"},
        {"Please open mail now", "open mail in open mail at 0"},
        {"Show my e-mail", "Show my e-mail in show my e-mail at 0"},
        {"Show my email", ""}, // shorter than the phrase, and three letters away from nothing else
        {"Show my email, please", "Show my e-mail in show my email, at 2"},
        {"opus wail", "open mail in opus wail at 3"},
        {"calandar", "calendar in calandar at 1"},
        {"mail", ""},
        {"", ""},
        {" ?! ", ""},
    };
    for (const auto& [transcript, expected] : cases)
        EXPECT_EQ(matched(transcript, commands), expected) << transcript;
}

TEST(CommandMatcherTest, CountsUpToFourChangesWhateverTheLengthOfThePhrase)
{
    EXPECT_EQ(matched("0000mmand", {command({"a command"})}), "a command in 0000mmand at 4");
    EXPECT_EQ(matched("00000mand", {command({"a command"})}), "");
    const std::string longPhrase(200, 'p');
    EXPECT_EQ(matched("xxxx" + longPhrase.substr(4), {command({longPhrase})}),
              longPhrase + " in xxxx" + longPhrase.substr(4) + " at 4");
    EXPECT_EQ(matched("xxxxx" + longPhrase.substr(5), {command({longPhrase})}), "");
    EXPECT_EQ(matched("anything at all", {command({"wqzk"})}), "wqzk in anyt at 4") << "as short phrases do";
}

TEST(CommandMatcherTest, PrefersTheNearestAndOfEquallyNearOnesTheFirst)
{
    EXPECT_EQ(matched("open mail", {command({"open mall"}), command({"open mail"})}), "open mail in open mail at 0");
    EXPECT_EQ(matched("open mail", {command({"open mall"}), command({"open maid"})}), "open mall in open mail at 1");
    EXPECT_EQ(matched("open maid, open mail", {command({"spare", "open mail"}), command({"open maid"})}),
              "open mail in open mail at 0");
}

TEST(CommandMatcherTest, ConsidersNeitherDisabledCommandsNorEmptyPhrases)
{
    EXPECT_EQ(matched("open mail", {command({"open mail"}, false)}), "");
    EXPECT_EQ(matched("open mail", {command({"open mail"}, false), command({"open mall"})}),
              "open mall in open mail at 1");
    EXPECT_EQ(matched("open mail", {command({}), command({"", " \n", "\u00A0"})}), "");
    EXPECT_TRUE(CommandMatcher().nearest("open", {command({"", "open"}, false), command({" "})}, 9).empty());
}

TEST(CommandMatcherTest, ComparesCharactersAsPeopleSeeThem)
{
    const std::string family = "👨‍👩‍👧‍👦";
    const std::string flag = "🇩🇪";
    const std::vector<std::vector<std::string>> cases = {
        // phrase, transcript, expected
        {"öffne käse", "O\u0308FFNE KA\u0308SE!", "öffne käse in öffne käse at 0"},
        {family + "12345", "x12345", family + "12345 in x12345 at 1"}, // one character, of seven code points
        {flag + flag + flag + flag + flag, "abcde", ""},
        {flag + flag + flag + flag, "abcd", flag + flag + flag + flag + " in abcd at 4"},
        {"שלום עולם", "שלום, עולם.", "שלום עולם in שלום, עול at 2"},
        {"открой почту", "Открой почту…", "открой почту in открой почту at 0"},
        {"नमस्ते दुनिया", "नमस्ते दुनिया।", "नमस्ते दुनिया in नमस्ते दुनिया at 0"},
        {"a\r\nb23456", "a\r\nb23456", "a\r\nb23456 in a\r\nb23456 at 0"},
        {"nul\0 byte"s, "NUL\0 BYTE"s, "nul\0 byte in nul\0 byte at 0"s},
        {"bad \xFF byte", "bad \xFE byte", "bad \xFF byte in bad \uFFFD byte at 0"},
    };
    for (const auto& testCase : cases)
        EXPECT_EQ(matched(testCase[1], {command({testCase[0]})}), testCase[2]) << testCase[0];
    EXPECT_EQ(comparedLength(family + flag + "e\u0301"), 3u);
}

/// Texts that nearly repeat themselves, with what is said out of pieces of the phrases, so that much is nearly a match.
class RandomTexts {
public:
    std::string text(std::size_t length)
    {
        static constexpr std::string_view kLetters = "aabbcdE .,";
        std::string text;
        while (text.size() < length)
            text += kLetters[below(kLetters.size())];
        return text;
    }
    std::string changed(std::string text)
    {
        for (std::size_t changes = below(7); changes > 0 && !text.empty(); --changes) {
            const auto place = below(text.size());
            const auto kind = below(3);
            if (kind == 0)
                text.erase(place, 1);
            else if (kind == 1)
                text.insert(place, 1, 'b');
            else
                text[place] = 'a';
        }
        return text;
    }
    std::size_t below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_random); }

private:
    std::mt19937 m_random{20260301};
};

TEST(CommandMatcherTest, FindsExactlyWhatThePlainDefinitionFinds)
{
    RandomTexts random;
    int found = 0;
    for (int round = 0; round < 1500; ++round) {
        std::vector<QuickCommandDefinition> commands;
        std::string said = random.text(random.below(30));
        for (std::size_t i = 0; i < 1 + random.below(4); ++i) {
            commands.push_back(command({}, random.below(8) != 0));
            for (std::size_t j = 0; j < random.below(4); ++j) {
                // Every tenth is longer than a machine word has bits.
                const auto longest = round % 10 == 0 ? 150U : 20U;
                commands.back().triggerPhrases.push_back(random.text(random.below(longest)));
                if (random.below(2) == 0)
                    said += random.changed(commands.back().triggerPhrases.back()) + random.text(random.below(9));
            }
        }
        const auto expected = PlainCommandMatcher::match(said, commands);
        ASSERT_EQ(CommandMatcher().match(said, commands), expected) << "round " << round << ": " << said;
        found += expected ? 1 : 0;
    }
    EXPECT_GT(found, 250);
    EXPECT_LT(found, 1400) << "what does not match is tried too little";
}

TEST(CommandMatcherTest, TellsTheNearestCommandsAndHowFarTheyAre)
{
    const std::vector commands{command({"show my calendar"}), command({"lock the screen", "open news"}),
                               command({"open mail"})};
    const auto near = CommandMatcher().nearest("I said nothing", commands, 2);
    ASSERT_EQ(near.size(), 2u);
    for (const auto& candidate : near) {
        EXPECT_FALSE(candidate.isPhraseTooLong);
        EXPECT_EQ(candidate.match.distance,
                  PlainCommandMatcher::levenshtein(candidate.match.window, candidate.match.phrase));
    }
    EXPECT_LE(near[0].match.distance, near[1].match.distance);

    const auto shorter = CommandMatcher().nearest("open mal", commands, 1);
    ASSERT_EQ(shorter.size(), 1u);
    EXPECT_EQ(shorter[0].match.phrase, "open mail");
    EXPECT_EQ(shorter[0].match.distance, 1);
    EXPECT_TRUE(shorter[0].isPhraseTooLong);
}

} // namespace
