#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"
#include "tests/platform/wayland/WaylandStage.h"

#include <QString>

#include <linux/input-event-codes.h>

namespace vocalith {
namespace {

using namespace vocalith::test;

class WaylandKeyEventsTest : public testing::Test {
protected:
    void type(const std::string& text)
    {
        const auto source = stage.keyEvents.createSource(KeyEvents::SourceState::privateState);
        ASSERT_TRUE(await(source->type(text)));
    }

    /// Presses a key with modifiers that are named and not pressed by keys of their own.
    void press(int key, std::uint64_t flags)
    {
        const auto source = stage.keyEvents.createSource(KeyEvents::SourceState::privateState);
        auto down = source->createKeyEvent(key, true).value();
        auto up = source->createKeyEvent(key, false).value();
        down.flags = up.flags = flags;
        ASSERT_TRUE(source->post({down, up}));
    }

    WaylandStage stage;
};

/// Every script, what Shift is for, what normalization would spoil, and more characters than one keymap holds.
std::string hardText()
{
    std::string text =
        "Hello, World! \"Quotes\" & <tags> {x} [y] ~`^|\\ 100% $5 #7 @me a_b c+d=e; it's; (ok)? *1/2*\n"
        "Ärger, Größe, naïve, Œuvre, Łódź, œ — “dash” … €\tTab\n"
        "Привет, мир! Γειά σου Κόσμε. שלום עולם. مرحبا بالعالم. नमस्ते दुनिया. สวัสดี\n"
        "こんにちは世界。你好，世界！ 안녕하세요 👋🏽 👩‍👩‍👧 e\u0301 \u00a0|\n";
    std::u32string many;
    for (char32_t character = U'\u4e00'; character < U'\u4e00' + 300; ++character)
        many += character;
    return text + QString::fromStdU32String(many).toStdString() + "\n";
}

TEST_F(WaylandKeyEventsTest, TypesEveryScriptExactlyIntoATerminal)
{
    const auto terminal = stage.compositor.startTerminal();
    stage.waitForFocus("foot");
    const auto text = hardText();
    type(text);
    runUntil([&] { return stage.compositor.typed().size() >= text.size(); });
    EXPECT_EQ(stage.compositor.typed(), text);
}

TEST_F(WaylandKeyEventsTest, TypesTenThousandCharactersWithoutAWrongOne)
{
    const auto terminal = stage.compositor.startTerminal();
    stage.waitForFocus("foot");
    std::string text;
    for (int line = 0; text.size() < 10'000; ++line)
        text += "Line " + std::to_string(line) + ": the quick brown fox jumps OVER the lazy dog, twice; güt.\n";
    const auto start = stage.clock.instant();
    type(text);
    RecordProperty("seconds", std::to_string(toSeconds(stage.clock.instant() - start)));
    runUntil([&] { return stage.compositor.typed().size() >= text.size(); });
    EXPECT_EQ(stage.compositor.typed(), text);
}

TEST_F(WaylandKeyEventsTest, TypesAndPastesExactlyIntoAnEditor)
{
    const auto file = stage.compositor.folder() / "document.txt";
    writeFile(file, "");
    const auto editor = stage.compositor.start({"mousepad", "--disable-server", file.string()});
    stage.waitForFocus("mousepad");
    const auto typed = hardText();
    type(typed);
    const auto save = [&] { press(virtualKeyCode(KEY_S), modifier_flags::command); };
    save();
    runUntil([&] { return readFile(file).size() >= typed.size(); });
    EXPECT_EQ(readFile(file), typed);

    bool isFetched = false;
    const auto subscription = stage.pasteboard.fetched.subscribe([&](const auto&) { isFetched = true; });
    ASSERT_TRUE(await(stage.pasteboard.writeText("pasted: Grüße, 世界\n", true)));
    press(virtual_key_code::ansiV, modifier_flags::command);
    runUntil([&] { return isFetched && await(stage.focusedApp.focused())->windowTitle.starts_with("*"); });
    save();
    const auto expected = typed + "pasted: Grüße, 世界\n";
    runUntil([&] { return readFile(file).size() >= expected.size(); });
    EXPECT_EQ(readFile(file), expected);
}

TEST_F(WaylandKeyEventsTest, PostsAChordOfFourEvents)
{
    const auto terminal = stage.compositor.startTerminal();
    stage.waitForFocus("foot");
    ASSERT_TRUE(await(stage.pasteboard.writeText("into the terminal", true)));
    const auto source = stage.keyEvents.createSource(KeyEvents::SourceState::privateState);
    const auto flags = modifier_flags::command | modifier_flags::shift;
    using namespace virtual_key_code;
    ASSERT_TRUE(
        source->post({{command, true, flags}, {ansiV, true, flags}, {ansiV, false, flags}, {command, false, 0}}));
    type(" v"); // with nothing held any more
    runUntil([&] { return stage.compositor.typed().size() >= 19; });
    EXPECT_EQ(stage.compositor.typed(), "into the terminal v");
}

TEST_F(WaylandKeyEventsTest, AStopEndsTheTypingBetweenTwoCharacters)
{
    const auto terminal = stage.compositor.startTerminal();
    stage.waitForFocus("foot");
    const auto source = stage.keyEvents.createSource(KeyEvents::SourceState::privateState);
    const std::string text(5'000, 'x');
    TaskScope scope;
    std::optional<Result<void, KeyEventsError>> result;
    scope.start(storeResult(source->type(text), result));
    runUntil([&] { return stage.compositor.typed().size() > 20; });
    scope.requestStop();
    runUntil([&] { return scope.isEmpty(); });
    ASSERT_FALSE(result.value());
    EXPECT_EQ(result->error().kind, KeyEventsError::Kind::cancelled);
    type("END");
    runUntil([&] { return stage.compositor.typed().ends_with("END"); });
    EXPECT_LT(stage.compositor.typed().size(), 4'000U);
}

TEST_F(WaylandKeyEventsTest, KnowsTheKeysThatItHas)
{
    const auto source = stage.keyEvents.createSource(KeyEvents::SourceState::hidSystem);
    EXPECT_TRUE(source->createKeyEvent(virtual_key_code::ansiV, true));
    EXPECT_TRUE(source->createKeyEvent(virtual_key_code::command, true));
    EXPECT_TRUE(source->createKeyEvent(virtual_key_code::returnKey, false));
    EXPECT_FALSE(source->createKeyEvent(9999, true));
    EXPECT_FALSE(source->createKeyEvent(virtual_key_code::foreign + 700, true));
    EXPECT_TRUE(await(stage.keyEvents.modifiersReleased(1.0)));
}

} // namespace
} // namespace vocalith
