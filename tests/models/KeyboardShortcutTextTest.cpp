#include "models/KeyboardShortcutText.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"

#include <gtest/gtest.h>

using namespace vocalith;

namespace {

TEST(KeyboardShortcutText, ReadsWhatPeopleWriteAndWritesOneForm)
{
    struct Case {
        const char* text;
        const char* written; ///< empty: no shortcut
    };
    const Case cases[] = {
        {"Ctrl+Alt+Space", "Ctrl+Alt+Space"},
        {"shift+control+a", "Ctrl+Shift+A"},
        {"WIN+esc", "Super+Escape"},
        {"cmd+option", "Alt+Super"},
        {"f12", "F12"},
        {"Ctrl+Plus", "Ctrl+="},
        {"Ctrl+Keypad+", ""},
        {"Ctrl+KeypadPlus", "Ctrl+KeypadPlus"},
        {"Ctrl+Key183", "Ctrl+F13"},
        {"Key248", "Key248"},
        {"", ""},
        {"Ctrl+", "Ctrl"},
        {"Ctrl++", ""},
        {"Ctrl+A+B", ""},
        {"F21", ""},
        {"Hyper+A", ""},
    };
    for (const auto& each : cases) {
        const auto keys = parseKeys(each.text);
        EXPECT_EQ(keys ? toString(*keys) : "", each.written) << each.text;
        if (keys) {
            EXPECT_EQ(parseKeys(toString(*keys)), keys) << each.text;
        }
    }
}

TEST(VirtualKeyCode, TranslatesEveryKeyThereAndBack)
{
    for (int code = 1; code < 0x300; ++code) {
        EXPECT_EQ(inputEventCode(virtualKeyCode(code)), code);
        const auto name = keyName(virtualKeyCode(code));
        const auto keys = parseKeys("Ctrl+" + name);
        ASSERT_TRUE(keys) << name;
        EXPECT_EQ(keys->keyCode, virtualKeyCode(code)) << name;
    }
    EXPECT_EQ(inputEventCode(52), std::nullopt);
    EXPECT_EQ(virtualKeyCode(1), virtual_key_code::escape);
    EXPECT_EQ(virtualKeyCode(28), virtual_key_code::returnKey);
    EXPECT_EQ(digitKeyCode(1), 18);
    EXPECT_EQ(digitKeyCode(0), 29);
    EXPECT_TRUE(isFunctionKey(96));
    EXPECT_FALSE(isFunctionKey(virtual_key_code::escape));
    EXPECT_EQ(modifierFlag(virtual_key_code::rightOption), modifier_flags::option);
}

} // namespace
