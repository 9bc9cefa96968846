#include "platform/freedesktop/DBusScreenLock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/SessionBus.h"

#include <gtest/gtest.h>

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusVariant>

#include <atomic>

using namespace vocalith;
using namespace vocalith::test;

namespace {

const QString kSession = QStringLiteral("/org/freedesktop/login1/session/_31");
const QString kHint = QStringLiteral("LockedHint");

class DBusScreenLockTest : public testing::Test {
protected:
    std::unique_ptr<BusService> screenSaver(const QString& name, const QString& path)
    {
        return std::make_unique<BusService>(
            m_bus.address(), BusService::Description{name, path, name, {}},
            [this](const BusService::Call&) { return QVariantList{m_isActive.load()}; });
    }
    bool becomes(const DBusScreenLock& lock, bool isLocked)
    {
        return runUntil([&] { return lock.isLocked.get() == isLocked; });
    }
    QDBusConnection bus() const { return connectTo(m_bus.address()); }

    SessionBus m_bus;
    std::atomic<bool> m_isActive = false;
    const QDBusConnection m_none{QStringLiteral("none")};
};

TEST_F(DBusScreenLockTest, FollowsTheScreenSaverOfEitherDesktop)
{
    DBusScreenLock lock(bus(), m_none);
    EXPECT_FALSE(lock.isLocked.get());
    auto first = screenSaver(QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("/ScreenSaver"));
    const auto second = screenSaver(QStringLiteral("org.gnome.ScreenSaver"), QStringLiteral("/org/gnome/ScreenSaver"));
    const auto changed = QStringLiteral("ActiveChanged");
    first->emitSignal(changed, {true});
    EXPECT_TRUE(becomes(lock, true));
    second->emitSignal(changed, {true});
    second->emitSignal(changed, {false});
    drainMainThread();
    EXPECT_TRUE(lock.isLocked.get()) << "one of the two says that it is";
    first->emitSignal(changed, {false});
    EXPECT_TRUE(becomes(lock, false));

    first->emitSignal(changed, {true});
    EXPECT_TRUE(becomes(lock, true));
    first.reset();
    EXPECT_TRUE(becomes(lock, false)) << "a locker that crashed locks nothing";
}

TEST_F(DBusScreenLockTest, KnowsAScreenThatWasLockedBefore)
{
    m_isActive = true;
    const auto service = screenSaver(QStringLiteral("org.gnome.ScreenSaver"), QStringLiteral("/org/gnome/ScreenSaver"));
    DBusScreenLock lock(bus(), m_none);
    EXPECT_TRUE(becomes(lock, true));
}

TEST_F(DBusScreenLockTest, FollowsTheHintOfItsLoginSession)
{
    const auto properties = QStringLiteral("org.freedesktop.DBus.Properties");
    const BusService manager(
        m_bus.address(),
        {QStringLiteral("org.freedesktop.login1"),
         QStringLiteral("/org/freedesktop/login1"),
         QStringLiteral("org.freedesktop.login1.Manager"),
         {}},
        [](const BusService::Call&) { return QVariantList{QVariant::fromValue(QDBusObjectPath(kSession))}; });
    DBusScreenLock lock(m_none, bus());
    runUntil([&] { return !manager.calls(QStringLiteral("GetSession")).empty(); });
    // Signals count only from the service that was asked, whose connection that is.
    const auto say = [&](const QString& interface, bool isLocked) {
        manager.emitSignalOf(kSession, properties, QStringLiteral("PropertiesChanged"),
                             {interface, QVariantMap{{kHint, isLocked}}, QStringList()});
    };
    drainMainThread();
    say(QStringLiteral("org.freedesktop.login1.Session"), true);
    EXPECT_TRUE(becomes(lock, true));
    say(QStringLiteral("org.freedesktop.login1.Manager"), false);
    drainMainThread();
    EXPECT_TRUE(lock.isLocked.get());
    say(QStringLiteral("org.freedesktop.login1.Session"), false);
    EXPECT_TRUE(becomes(lock, false));
}

} // namespace
