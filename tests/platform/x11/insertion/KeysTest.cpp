#include "tests/platform/x11/insertion/X11Desk.h"

#include "models/ModifierFlags.h"

#include <array>

namespace {

using namespace vocalith;
using namespace vocalith::test;
using Kind = TextEditor::Kind;

constexpr auto kCommand = modifier_flags::command;
constexpr const char* kUS = "com.apple.keylayout.US";

constexpr const char* kMixed = "The quick brown FOX: {[(\"'<@#$%^&*>')]}~`|\\/!?\n"
                               "\tÄÖÜß éèê ñ ¿¡ € £ ½ — “quotes” … ™\r\n"
                               "Съешь ещё этих мягких французских булок, да выпей чаю\n"
                               "Ξεσκεπάζω τὴν ψυχοφθόρα βδελυγμία\n"
                               "日本語のテキスト、漢字とカナ。中文也可以\n"
                               "한국어 텍스트 عربي مرحبا עברית हिन्दी ไทย\n"
                               "👍🏽 😀 🎉 𝔘𝔫𝔦𝔠𝔬𝔡𝔢 aaaa";

std::string withLineFeeds(std::string text)
{
    std::erase(text, '\r');
    return text;
}

/// The map of the keyboard as another program sees it.
std::string mapOf(const X11Desk& desk)
{
    return desk.display.run({"xmodmap", "-pke"});
}

void type(X11Desk& desk, const std::string& text)
{
    const auto source = desk.keys.createSource(KeyEvents::SourceState::privateState);
    const auto result = await(source->type(text));
    EXPECT_TRUE(result) << userMessage(result.error());
}

TEST(X11Typing, IsExactInEveryScriptAndLeavesTheMapAsItWas)
{
    for (const auto kind : {Kind::mousepad, Kind::featherpad}) {
        SCOPED_TRACE(nameOf(kind));
        X11Desk desk;
        desk.display.setLayout("us,de");
        const auto map = mapOf(desk);
        const TextEditor editor(desk.display, kind);
        type(desk, kMixed);
        editor.expectText(withLineFeeds(kMixed));
        EXPECT_EQ(mapOf(desk), map);
    }
}

TEST(X11Typing, DoesNotDependOnLocksLayoutsOrTheUsersFingers)
{
    struct Case {
        const char* name;
        std::vector<std::vector<std::string>> before;
    };
    const std::array cases{
        Case{"caps lock", {{"xdotool", "key", "Caps_Lock"}}},
        Case{"num lock", {{"xdotool", "key", "Num_Lock"}}},
        Case{"Russian", {{"setxkbmap", "us,ru"}, {"xdotool", "key", "ISO_Next_Group"}}},
        Case{"Dvorak", {{"setxkbmap", "de", "dvorak"}}},
        Case{"Alt held", {{"xdotool", "keydown", "alt"}}},
        Case{"Super and Shift held", {{"xdotool", "keydown", "super", "keydown", "shift"}}},
    };
    const std::string text = "Hello World, 123 äß Привет 漢字!";
    for (const auto& [name, before] : cases) {
        for (const auto kind : {Kind::mousepad, Kind::featherpad}) {
            SCOPED_TRACE(nameOf(kind) + ", " + name);
            X11Desk desk;
            const TextEditor editor(desk.display, kind);
            for (const auto& command : before)
                desk.display.run(command);
            type(desk, text);
            desk.display.run({"xdotool", "keyup", "alt", "keyup", "super", "keyup", "shift"});
            desk.display.run({"setxkbmap", "us"});
            editor.expectText(text);
        }
    }
}

TEST(X11Typing, SurvivesAKeyboardThatChangesInTheMiddle)
{
    std::string text;
    for (int line = 0; line < 60; ++line)
        text += "line " + std::to_string(line) + " с разными буквами äöü and more of it\n";
    for (const auto kind : {Kind::mousepad, Kind::featherpad}) {
        SCOPED_TRACE(nameOf(kind));
        X11Desk desk;
        const TextEditor editor(desk.display, kind);
        auto changes = desk.display.start({"/bin/sh", "-c",
                                           "while :; do for layout in ru de,us fr us; do setxkbmap "
                                           "$layout; sleep 0.05; done; done"});
        type(desk, text);
        changes.kill();
        desk.display.run({"setxkbmap", "us"});
        editor.expectText(text);
    }
}

TEST(X11Typing, StopsBetweenTwoCharactersAndWhenTheFocusGoes)
{
    X11Desk desk;
    const auto map = mapOf(desk);
    const TextEditor editor(desk.display, Kind::mousepad);
    std::string text;
    for (int count = 0; count < 20'000; ++count)
        text += "ж";
    const auto source = desk.keys.createSource(KeyEvents::SourceState::privateState);
    std::optional<Result<void, KeyEventsError>> result;
    TaskScope scope;
    scope.start(storeResult(source->type(text), result));
    runUntil([&] { return mapOf(desk) != map; }); // it has begun
    await(sleepFor(desk.clock, std::chrono::milliseconds(300)));
    ASSERT_FALSE(scope.isEmpty());
    scope.requestStop();
    runUntil([&] { return scope.isEmpty(); });
    EXPECT_EQ(result->error().kind, KeyEventsError::Kind::cancelled);
    EXPECT_TRUE(runUntil([&] { return mapOf(desk) == map; })); // the keys are taken back a little later
    editor.save();
    runUntil([&] { return !editor.saved().empty(); });
    const auto typed = editor.saved();
    EXPECT_GT(typed.size(), 0);
    EXPECT_EQ(text.substr(0, typed.size()), typed);

    // What was meant for one window is not typed into another.
    result.reset();
    scope.start(storeResult(source->type(text), result));
    const TextEditor other(desk.display, Kind::featherpad);
    runUntil([&] { return scope.isEmpty(); });
    EXPECT_EQ(result->error().kind, KeyEventsError::Kind::failed);
    other.expectText("");
}

TEST(X11Typing, TakesBackWhatAKilledTypistLeft)
{
    X11Desk desk;
    const auto map = mapOf(desk);
    {
        // The note that a program of an earlier start has left, and the key that it had lent.
        desk.display.run({"xmodmap", "-e", "keycode 93 = Cyrillic_zhe Cyrillic_zhe", "-e", "keycode 97 = u u"});
        const auto connection = desk.connect();
        const std::vector<unsigned long> note{0x7654321, 93, 0x6d6, 97, 0x6d6}; // 97 has another meaning by now
        XChangeProperty(connection->display(), connection->root(), connection->atom("_VOCALITH_LENT_KEYS"), 6, 32,
                        PropModeReplace, reinterpret_cast<const unsigned char*>(note.data()), 5);
        XSync(connection->display(), False);
    }
    const auto connection = desk.connect();
    const X11KeyEvents next(*connection, desk.clock, {});
    EXPECT_EQ(mapOf(desk).find("Cyrillic_zhe"), std::string::npos);
    EXPECT_NE(mapOf(desk).find("keycode  97 = u"), std::string::npos);
}

TEST(X11Keys, PasteUnderEveryLayout)
{
    struct Case {
        const char* layouts;
        const char* variants;
        bool hasUS;
        std::vector<std::vector<std::string>> before;
    };
    const std::array cases{
        Case{"de,us", "dvorak,", true, {}},
        Case{"de", "dvorak", false, {}},
        Case{"us,ru", "", true, {{"xdotool", "key", "ISO_Next_Group"}}},
        Case{"us", "", true, {{"xdotool", "keydown", "super"}}},
        Case{"us", "", true, {{"xdotool", "keydown", "alt"}}},
        Case{"us", "", true, {{"xdotool", "keydown", "control", "keydown", "shift"}}},
    };
    for (const auto& test : cases) {
        for (const auto kind : {Kind::mousepad, Kind::featherpad}) {
            SCOPED_TRACE(nameOf(kind) + ", " + test.layouts);
            X11Desk desk;
            desk.display.setLayout(test.layouts, test.variants);
            const TextEditor editor(desk.display, kind);
            for (const auto& command : test.before)
                desk.display.run(command);
            const auto before = desk.layouts.current();
            EXPECT_EQ(desk.layouts.select(kUS), test.hasUS);
            desk.paste("words", kCommand);
            EXPECT_TRUE(desk.layouts.select(before.value()));
            EXPECT_EQ(desk.layouts.current(), before);
            desk.display.run({"xdotool", "keyup", "alt", "keyup", "super", "keyup", "shift", "keyup", "control"});
            desk.display.run({"setxkbmap", "us"});
            editor.expectText("words");
        }
    }
}

TEST(X11Keys, WaitForTheUserToLetGo)
{
    X11Desk desk;
    EXPECT_TRUE(await(desk.keys.modifiersReleased(5)));
    desk.display.run({"xdotool", "keydown", "alt", "keydown", "shift"});
    EXPECT_FALSE(await(desk.keys.modifiersReleased(0.1)));
    std::optional<bool> released;
    TaskScope scope;
    scope.start(storeResult(desk.keys.modifiersReleased(30), released));
    desk.display.run({"xdotool", "keyup", "alt"});
    drainMainThread();
    EXPECT_FALSE(released);
    desk.display.run({"xdotool", "keyup", "shift"});
    runUntil([&] { return scope.isEmpty(); });
    EXPECT_EQ(released, true);
    desk.display.run({"xdotool", "key", "Caps_Lock"}); // a lock is not held
    EXPECT_TRUE(await(desk.keys.modifiersReleased(5)));
}

TEST(X11Layouts, HaveTheNamesOfTheSettings)
{
    X11Desk desk;
    desk.display.setLayout("us,ru,de", ",,dvorak");
    const std::vector<std::string> names{kUS, "ru", "de(dvorak)"};
    EXPECT_EQ(desk.layouts.installed(), names);
    for (const auto& name : names) {
        EXPECT_TRUE(desk.layouts.select(name));
        EXPECT_EQ(desk.layouts.current(), name);
    }
    EXPECT_FALSE(desk.layouts.select("fr"));
    EXPECT_EQ(desk.layouts.current(), "de(dvorak)");
}

TEST(X11Focus, NamesTheApplication)
{
    for (const bool hasWindowManager : {true, false}) {
        SCOPED_TRACE(hasWindowManager);
        XDisplay::Options options;
        options.hasWindowManager = hasWindowManager;
        X11Desk desk(options);
        const auto none = await(desk.focus.focused());
        EXPECT_FALSE(none) << none->windowTitle;
        if (!hasWindowManager)
            continue; // no program gets the focus by itself then
        {
            const TextEditor editor(desk.display, Kind::mousepad);
            std::optional<FocusedApplication> focused;
            runUntil([&] {
                focused = await(desk.focus.focused());
                return focused.has_value();
            });
            ASSERT_TRUE(focused);
            EXPECT_EQ(focused->identifier, "org.xfce.mousepad");
            EXPECT_EQ(focused->name, "Mousepad");
            EXPECT_NE(focused->windowTitle.find("Mousepad.txt"), std::string::npos) << focused->windowTitle;
            EXPECT_EQ(focused->processId, editor.processId());
            EXPECT_FALSE(focused->isTerminal);
            ASSERT_TRUE(focused->window);
            EXPECT_GT(focused->window->width, 100);
            EXPECT_GT(focused->window->y, 0); // the title bar is above it
        }
        const TextEditor terminal(desk.display, Kind::xterm);
        // The window manager says so a moment after it has given the focus.
        EXPECT_TRUE(runUntil([&] {
            const auto focused = await(desk.focus.focused());
            return focused && focused->isTerminal;
        }));
    }
}

} // namespace
