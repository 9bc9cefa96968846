// The stored forms of what the settings hold.

#include "base/CaseName.h"
#include "base/Json.h"
#include "models/AIProvider.h"
#include "models/HistoryStoragePolicy.h"
#include "models/WordReplacement.h"
#include "tests/support/Places.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

Json golden(const std::string& name)
{
    return parseJson(readFile(testData() / "models" / (name + ".json"))).value();
}

TEST(SettingsForm, EveryProviderSurvivesALoadAndSaveUnderItsOwnName)
{
    const auto stored = golden("providers");
    const auto providers = fromJson<std::vector<AIProvider>>(stored);
    ASSERT_TRUE(providers) << toString(providers.error());
    EXPECT_EQ(toJson(*providers), stored);
    ASSERT_EQ(providers->size(), kAllCases<AIProviderKind>.size());
    for (std::size_t i = 0; i < providers->size(); ++i) {
        const auto& provider = (*providers)[i];
        const auto type = stored[i]["type"].get<std::string>();
        EXPECT_EQ(caseName(kind(provider)), type);
        EXPECT_EQ(caseName(providerType(provider)), type == "appleIntelligence" ? "apple" : type);
        EXPECT_EQ(id(provider).toString(), stored[i]["provider"]["id"]);
        EXPECT_EQ(caseName(state(provider)), stored[i]["provider"]["state"]);
    }
    EXPECT_EQ(std::get<OllamaProvider>((*providers)[2]).baseURL, "http://localhost:11434/v1");
    EXPECT_EQ(displayName(AIProviderKind::custom), "OpenAI Compatible");
    EXPECT_EQ(displayName(AIProviderKind::xai), "xAI");
}

TEST(SettingsForm, AProviderOfAnotherTypeOrWithoutAFieldIsRefused)
{
    const auto whole = golden("providers");
    for (const auto& provider : whole) {
        for (const auto& [key, value] : provider["provider"].items()) {
            auto broken = provider;
            broken["provider"].erase(key);
            const auto read = fromJson<AIProvider>(broken);
            ASSERT_FALSE(read) << broken;
            EXPECT_EQ(read.error().path, "provider." + key);
        }
    }
    auto unheardOf = whole[0];
    unheardOf["type"] = "ofTheFuture";
    EXPECT_FALSE(fromJson<AIProvider>(unheardOf));
}

TEST(SettingsForm, AWordReplacementOfBeforeTimingsIsPlainAndComesBeforeTheAI)
{
    const auto read = [](const char* extra) {
        const auto text = R"({"id": "00000000-0000-4000-8000-000000000001", "original": "a", "replacement": "b")" +
                          std::string(extra) + "}";
        return fromJson<WordReplacement>(parseJson(text).value());
    };
    EXPECT_EQ(read("")->timing, WordReplacementTiming::beforeAI);
    EXPECT_FALSE(read("")->isRegex);
    EXPECT_TRUE(read(R"(, "isRegex": true)")->isRegex);
    EXPECT_EQ(read(R"(, "timing": "both")")->timing, WordReplacementTiming::both);
    EXPECT_EQ(read(R"(, "timing": "later")").error().path, "timing");
    EXPECT_FALSE(fromJson<WordReplacement>(Json{{"original", "a"}}));
    const auto stored = toJson(*read(R"(, "timing": "afterAI", "isRegex": true)"));
    EXPECT_EQ(fromJson<WordReplacement>(stored).value(), *read(R"(, "timing": "afterAI", "isRegex": true)"));
}

TEST(SettingsForm, RetentionIsCountedInDaysAndNotByTheCalendar)
{
    using enum HistoryStoragePolicy;
    const std::pair<HistoryStoragePolicy, int> periods[] = {
        {twelveHours, 43'200}, {oneDay, 86'400},         {threeDays, 259'200},    {oneWeek, 604'800},
        {oneMonth, 2'592'000}, {threeMonths, 7'776'000}, {sixMonths, 15'552'000}, {oneYear, 31'536'000}};
    for (const auto& [policy, seconds] : periods)
        EXPECT_EQ(retention(policy), std::chrono::seconds(seconds)) << label(policy);
    EXPECT_FALSE(retention(forever));
    EXPECT_FALSE(retention(disabled)) << "it must not be taken for \"delete all\"";
}

} // namespace
