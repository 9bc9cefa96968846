#include "app/ui/TrayIcon.h"
#include "tests/app/ui/Display.h"
#include "tests/support/MainLoop.h"
#include "tests/support/StatusTray.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using testing::ElementsAre;
using testing::IsSupersetOf;

namespace {

/// "Mail & more" as Qt writes it for the desktop: an underscore marks the mnemonic, and the ampersand stays.
constexpr const char* kMail = "Mail _& more";

class TrayIconTest : public testing::Test {
protected:
    TrayActions actions()
    {
        const auto noted = [this](const char* what) { return [this, what] { done.emplace_back(what); }; };
        return {noted("start or stop"),
                [this](const std::string& id) { done.push_back("prompt " + id); },
                [this](const std::string& id) { done.push_back("model " + id); },
                noted("last text"),
                noted("history"),
                noted("settings"),
                noted("quit")};
    }

    std::vector<std::string> done;
    TrayState state;
    const StatusTray tray{display().busAddress()};
};

TEST_F(TrayIconTest, EveryEntryOfTheMenuDoesWhatItSays)
{
    state.prompts.set({{{"a", "Dictate"}, {"b", "Mail & more"}}, "a"});
    state.models.set({{{"base", "Whisper Base"}}, "base"});
    state.hasLastText.set(true);
    TrayIcon icon(state, actions());
    runUntil([&] { return tray.icons() == 1; });
    EXPECT_THAT(tray.titles(), ElementsAre("Start Dictation", "Prompt", "Dictate", kMail, "Model", "Whisper Base",
                                           "Last Text Again", "History Folder", "Settings File", "Quit"));
    for (const auto* title :
         {"Start Dictation", kMail, "Whisper Base", "Last Text Again", "History Folder", "Settings File", "Quit"})
        tray.click(title);
    EXPECT_THAT(done,
                ElementsAre("start or stop", "prompt b", "model base", "last text", "history", "settings", "quit"));

    state.phase.set(TrayPhase::recording);
    state.prompts.set({{{"c", "Translate"}}, "c"});
    EXPECT_THAT(tray.titles(), IsSupersetOf({"Stop Dictation", "Translate"}));
    EXPECT_THAT(tray.titles(), testing::Not(testing::Contains("Dictate")));
}

TEST_F(TrayIconTest, IsGoneWhileItIsNotWanted)
{
    TrayIcon icon(state, actions());
    icon.setWanted(false);
    drainMainThread();
    icon.setWanted(true);
    runUntil([&] { return tray.icons() == 1; });
    icon.setWanted(false);
    EXPECT_FALSE(tray.menu());
}

} // namespace
