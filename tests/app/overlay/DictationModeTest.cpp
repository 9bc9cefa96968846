#include "app/overlay/DictationMode.h"

#include "core/session/ConfigurationManager.h"
#include "tests/support/RecordedLog.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using Names = std::vector<std::string>;

namespace {

/// What the overlay shows to choose from, with so many prompts ("1", "2", …) and keys for them.
Names numbered(int prompts, int keys)
{
    const RecordedLog log;
    DictationConfiguration loaded;
    loaded.numberKeys = keys;
    for (int number = 1; number <= prompts; ++number)
        loaded.prompts.emplace_back().name = std::to_string(number);
    ConfigurationManager configuration([&]() -> Result<DictationConfiguration, std::string> { return loaded; },
                                       log.logger());
    EXPECT_TRUE(configuration.load());
    DictationMode mode(configuration);
    mode.begin(loaded.prompts.back());
    EXPECT_EQ(mode.choice().name, std::to_string(prompts));
    return mode.choice().numbered;
}

TEST(DictationMode, ShowsNumbersOnlyForKeysThatChooseAnotherPrompt)
{
    EXPECT_EQ(numbered(3, 9), (Names{"1", "2", "3"}));
    EXPECT_EQ(numbered(11, 9), (Names{"1", "2", "3", "4", "5", "6", "7", "8", "9"}));
    EXPECT_EQ(numbered(3, 0), Names{}) << "a desktop that lends no keys";
    EXPECT_EQ(numbered(1, 9), Names{}) << "nothing to choose";
}

} // namespace
