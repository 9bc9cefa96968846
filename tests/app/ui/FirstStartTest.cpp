#include "app/ui/DesktopLook.h"
#include "app/ui/start/FirstStartModel.h"
#include "app/ui/start/FirstStartWindow.h"
#include "core/session/shortcuts/KeyboardShortcutRecordingService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/app/ui/Display.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <QtDBus/QDBusConnection>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickView>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

class FirstStartTest : public testing::Test {
protected:
    FirstStartTest()
    {
        m_microphone.start = [this] { m_listening = true; };
        m_microphone.stop = [this] { m_listening = false; };
    }

    TemporaryFolder m_folder;
    FakeClock m_clock;
    PersistentAppStorage m_storage{m_folder / "settings.json", m_clock, Logger()};
    KeyboardShortcutRecordingService m_recorder{m_storage.voiceJournalShortcut.get().id, m_storage, false, Logger()};
    bool m_listening = false;
    MicrophoneCheck m_microphone;
    FirstStartModel m_model{m_recorder, m_microphone, m_storage, m_clock};
};

TEST_F(FirstStartTest, TakesTheKeysThatArePressedInItsWindow)
{
    DesktopLook look(AppAppearance::light, QDBusConnection(QStringLiteral("none")));
    FirstStartWindow window(m_model, look);
    window.show();
    runUntil([&] { return window.view().isActive(); });
    display().press("ctrl+alt+d");
    drainMainThread();
    EXPECT_EQ(m_model.shortcut(), QString()) << "nothing is recorded yet";
    m_model.recordShortcut();
    display().press("ctrl+alt+d");
    runUntil([&] { return !m_model.isRecordingShortcut(); });
    EXPECT_EQ(m_model.shortcut(), QStringLiteral("Ctrl+Alt+D"));

    m_model.recordShortcut();
    display().press("Escape");
    runUntil([&] { return !m_model.isRecordingShortcut(); });
    EXPECT_EQ(m_model.shortcut(), QStringLiteral("Ctrl+Alt+D"));
    EXPECT_TRUE(m_storage.voiceJournalShortcut.get().keys);

    EXPECT_TRUE(m_storage.isFirstLaunch.get());
    m_model.setPage(FirstStartModel::microphonePage);
    window.view().close();
    EXPECT_FALSE(m_storage.isFirstLaunch.get());
    EXPECT_FALSE(m_listening) << "a window that is gone listens to nobody";
}

TEST_F(FirstStartTest, ShowsWhatIsDictatedAndNeverAsksTheClipboard)
{
    const auto file = m_folder / "copied";
    writeFile(file, "copied elsewhere");
    display().run({"xclip", "-selection", "clipboard", "-in", file.string()});
    DesktopLook look(AppAppearance::light, QDBusConnection(QStringLiteral("none")));
    FirstStartWindow window(m_model, look);
    window.show();
    runUntil([&] { return window.isActive(); });
    EXPECT_FALSE(m_model.insert("too early"));
    display().press("Return");
    display().press("Return");
    runUntil([&] { return m_model.page() == FirstStartModel::tryPage; });
    EXPECT_TRUE(m_model.insert("hello "));
    EXPECT_TRUE(m_model.insert("world"));

    QObject* field = nullptr;
    for (auto* item : window.view().rootObject()->findChildren<QObject*>()) {
        if (item->property("canPaste").isValid())
            field = item;
    }
    ASSERT_TRUE(field);
    EXPECT_EQ(field->property("text").toString(), QStringLiteral("hello world"));
    // Who could be pasted into waits for the clipboard's owner, which may be this program.
    EXPECT_FALSE(field->property("canPaste").toBool());
}

TEST_F(FirstStartTest, TellsASilentMicrophoneFromOneThatHears)
{
    EXPECT_FALSE(m_listening);
    m_model.setPage(FirstStartModel::microphonePage);
    EXPECT_TRUE(m_listening);
    m_microphone.level.set(0.05F);
    m_clock.advance(3s);
    EXPECT_EQ(m_model.microphoneProblem(), QString());
    m_clock.advance(2s);
    EXPECT_TRUE(m_model.microphoneProblem().startsWith(QStringLiteral("Nothing can be heard.")));
    m_microphone.level.set(0.6F);
    EXPECT_TRUE(m_model.hasHeard());
    EXPECT_EQ(m_model.microphoneProblem(), QString());
    m_microphone.problem.set("No microphone was found.");
    EXPECT_EQ(m_model.microphoneProblem(), QStringLiteral("No microphone was found."));

    m_model.setPage(FirstStartModel::tryPage);
    EXPECT_FALSE(m_listening);
    m_model.finish();
    EXPECT_FALSE(m_storage.isFirstLaunch.get());
    EXPECT_EQ(m_clock.pendingTimers(), 0U);
}

} // namespace
