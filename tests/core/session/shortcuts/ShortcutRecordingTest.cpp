#include "core/session/shortcuts/KeyboardShortcutRecordingService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "models/KeyboardShortcutText.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"
#include "tests/support/FakeClock.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

constexpr auto kNothing = "No shortcut was recorded. Please try again.";

class ShortcutRecording : public testing::Test {
protected:
    ShortcutRecording()
    {
        AIPrompt prompt;
        prompt.id = Uuid::random();
        prompt.name = "Mail";
        prompt.shortcut = {Uuid::random(), parseKeys("Ctrl+Alt+M"), true, ActivationMode::toggle};
        storage.aiPrompts.set({prompt});
    }

    /// As a user does: modifiers down one after the other, the key down and up, modifiers up.
    void type(KeyboardShortcutRecordingService& service, const std::string& text)
    {
        const auto keys = parseKeys(text).value();
        std::vector<int> down;
        std::uint64_t held = 0;
        for (const int code : {virtual_key_code::control, virtual_key_code::rightOption, virtual_key_code::shift,
                               virtual_key_code::rightCommand}) {
            if ((keys.rawFlags & modifierFlag(code)) == 0)
                continue;
            service.handleKeyEvent(code, held, true);
            held |= modifierFlag(code);
            down.push_back(code);
        }
        if (keys.keyCode) {
            service.handleKeyEvent(*keys.keyCode, held | modifier_flags::capsLock, true);
            service.handleKeyEvent(*keys.keyCode, held, false);
        }
        for (const int code : down) {
            held &= ~modifierFlag(code);
            service.handleKeyEvent(code, held, false);
        }
    }
    std::string journal() const
    {
        const auto keys = storage.voiceJournalShortcut.get().keys;
        return keys ? toString(*keys) : "";
    }

    TemporaryFolder folder;
    FakeClock clock;
    PersistentAppStorage storage{folder / "settings.json", clock, Logger()};
    const Uuid journalID = storage.voiceJournalShortcut.get().id;
};

TEST_F(ShortcutRecording, TakesWhatCanBeAShortcut)
{
    struct Case {
        const char* typed;
        bool keyRequired;
        std::optional<std::string> message;
        bool isTaken;
    };
    const std::vector<Case> cases{
        {"Ctrl+Alt+Space", true, std::nullopt, true},
        {"F5", true, std::nullopt, true},
        {"Ctrl+Super", false, std::nullopt, true},
        {"Ctrl+Super", true, "Shortcut must include at least one key in addition to modifier keys.", false},
        {"A", false, "Shortcut must include at least one modifier key (⌘, ⌥, ⌃, ⇧) unless you're using a function key.",
         false},
        {"Ctrl+C", false, "This shortcut is already used by the system. Using it may conflict with system operations.",
         true},
        {"Ctrl+Alt+M", false, "This key combination is already used by the app. Please use a different shortcut.",
         false},
        {"Escape", false, kNothing, false},
        {"Ctrl+Alt+F2", false,
         "This shortcut is already used by the system. Using it may conflict with system operations.", true},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.typed);
        KeyboardShortcutRecordingService service(journalID, storage, each.keyRequired, Logger());
        service.clear();
        service.startRecording();
        type(service, each.typed);
        EXPECT_EQ(service.errorMessage.get(), each.message);
        EXPECT_EQ(journal(), each.isTaken ? each.typed : "");
        EXPECT_EQ(service.currentShortcut.get(), storage.voiceJournalShortcut.get());
        const bool goesOn = !each.isTaken && each.message != kNothing;
        EXPECT_EQ(service.recordingInProgress.get(), goesOn) << "after a refusal the next try counts";
    }
}

TEST_F(ShortcutRecording, GoesOnAfterARefusalAndKeepsTheRestOfTheShortcut)
{
    const auto before = storage.aiPrompts.get().at(0);
    KeyboardShortcutRecordingService service(before.shortcut.id, storage, false, Logger());
    EXPECT_FALSE(service.handleKeyEvent(virtual_key_code::space, modifier_flags::control, true)) << "not asked";
    service.startRecording();
    type(service, "A");
    service.stopRecording();
    EXPECT_NE(service.errorMessage.get(), kNothing) << "why A did not do says more";
    service.startRecording();
    EXPECT_EQ(service.errorMessage.get(), std::nullopt);
    type(service, "A");
    type(service, "Ctrl+Alt+M"); // its own keys are no conflict
    EXPECT_EQ(service.errorMessage.get(), std::nullopt);
    EXPECT_EQ(storage.aiPrompts.get().at(0), before);
    service.clear();
    EXPECT_EQ(storage.aiPrompts.get().at(0).shortcut.keys, std::nullopt);
    EXPECT_TRUE(storage.aiPrompts.get().at(0).shortcut.visionEnabled);

    storage.aiPrompts.set({});
    EXPECT_EQ(service.currentShortcut.get(), std::nullopt);
    service.startRecording();
    type(service, "Ctrl+Alt+N");
    EXPECT_EQ(service.errorMessage.get(), kNothing) << "the prompt was deleted meanwhile";
}

} // namespace
