#include "platform/freedesktop/DesktopNotices.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/SessionBus.h"

#include <gtest/gtest.h>

#include <QtDBus/QDBusConnection>

#include <atomic>

using namespace vocalith;
using namespace vocalith::test;

namespace {

const QString kName = QStringLiteral("org.freedesktop.Notifications");
const QString kNotify = QStringLiteral("Notify");

class DesktopNoticesTest : public testing::Test {
protected:
    std::unique_ptr<BusService> notificationService()
    {
        return std::make_unique<BusService>(
            m_bus.address(),
            BusService::Description{kName, QStringLiteral("/org/freedesktop/Notifications"), kName, {}},
            [this](const BusService::Call&) { return m_refuses ? std::nullopt : std::optional(QVariantList{7U}); });
    }

    SessionBus m_bus;
    RecordedLog m_log;
    std::atomic<bool> m_refuses = false;
};

TEST_F(DesktopNoticesTest, HandsTheWholeTextToTheDesktop)
{
    const auto service = notificationService();
    DesktopNotices notices(m_log.logger(), connectTo(m_bus.address()));
    notices.show("Failed to recognize text. The model <base> & its data are missing. Install it.");
    notices.show("It is on the clipboard");
    ASSERT_TRUE(runUntil([&] { return service->calls(kNotify).size() == 2; }));

    const auto text = service->calls(kNotify)[0].arguments;
    ASSERT_EQ(text.size(), 8);
    EXPECT_EQ(text[3].toString(), QStringLiteral("Failed to recognize text."));
    EXPECT_EQ(text[4].toString(), QStringLiteral("The model &lt;base&gt; &amp; its data are missing. Install it."));
    EXPECT_EQ(service->calls(kNotify)[1].arguments[3].toString(), QStringLiteral("It is on the clipboard"));
    EXPECT_TRUE(m_log.has("It is on the clipboard"));
    EXPECT_FALSE(m_log.has("could not be shown"));
}

TEST_F(DesktopNoticesTest, SaysInTheLogWhatNobodyShows)
{
    {
        DesktopNotices notices(m_log.logger(), connectTo(m_bus.address()));
        std::string told;
        const auto subscription = notices.undelivered.subscribe([&](const auto& text) { told = text; });
        notices.show("nobody listens");
        runUntil([&] { return m_log.has("The notice could not be shown"); });
        EXPECT_EQ(told, "nobody listens");
    }
    EXPECT_TRUE(m_log.has("nobody listens"));

    m_refuses = true;
    const auto service = notificationService();
    auto notices = std::make_unique<DesktopNotices>(m_log.logger(), connectTo(m_bus.address()));
    notices->show("refused");
    runUntil([&] { return m_log.has("it was told to refuse"); });

    notices->show("the program ends before the answer comes");
    notices.reset();
    runUntil([&] { return service->calls(kNotify).size() == 2; });
    drainMainThread();

    DesktopNotices without(m_log.logger(), QDBusConnection(QStringLiteral("none")));
    without.show("no bus at all");
    EXPECT_TRUE(m_log.has("there is no session bus"));
}

} // namespace
