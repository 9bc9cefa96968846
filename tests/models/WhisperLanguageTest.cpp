#include "models/WhisperLanguage.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace vocalith;

namespace {

TEST(WhisperLanguage, IsAutomaticFirstAndThenSortedByCode)
{
    const auto languages = allWhisperLanguages();
    ASSERT_EQ(languages.size(), 101U);
    EXPECT_EQ(languages.front(), WhisperLanguage::automatic);
    EXPECT_TRUE(std::is_sorted(languages.begin() + 1, languages.end(),
                               [](auto left, auto right) { return rawValue(left) < rawValue(right); }));
    EXPECT_EQ(rawValue(WhisperLanguage::zh), "zh") << "the enumeration and the table do not match";
    EXPECT_EQ(displayName(WhisperLanguage::ht), "Haitian Creole");
}

TEST(WhisperLanguage, IsReadFromCodeOrName)
{
    EXPECT_EQ(parseWhisperLanguage("de"), WhisperLanguage::de);
    EXPECT_EQ(parseWhisperLanguage("HAW"), WhisperLanguage::haw);
    EXPECT_EQ(parseWhisperLanguage("haitian creole"), WhisperLanguage::ht);
    EXPECT_EQ(parseWhisperLanguage("auto"), WhisperLanguage::automatic);
    for (const auto* unknown : {"", "d", "deu", "klingon", "de "})
        EXPECT_EQ(parseWhisperLanguage(unknown), std::nullopt) << unknown;
}

} // namespace
