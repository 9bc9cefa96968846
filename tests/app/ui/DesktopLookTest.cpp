#include "app/ui/DesktopLook.h"
#include "tests/support/MainLoop.h"
#include "tests/support/SessionBus.h"

#include <gtest/gtest.h>

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusVariant>
#include <QtGui/QGuiApplication>
#include <QtGui/QPalette>

#include <QMap>

using namespace vocalith;
using namespace vocalith::test;

namespace {

using Settings = QMap<QString, QVariantMap>;

const QString kCommon = QStringLiteral("org.freedesktop.appearance");

TEST(DesktopLookTest, FollowsTheDesktopsSettings)
{
    qDBusRegisterMetaType<Settings>();
    const SessionBus bus;
    const BusService portal(
        bus.address(),
        {QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
         QStringLiteral("org.freedesktop.portal.Settings"), QString()},
        [](const BusService::Call&) {
            const Settings settings{
                {kCommon, {{QStringLiteral("color-scheme"), 1U}, {QStringLiteral("contrast"), 1U}}},
                {QStringLiteral("org.gnome.desktop.interface"), {{QStringLiteral("enable-animations"), false}}}};
            return std::optional(QVariantList{QVariant::fromValue(settings)});
        });
    DesktopLook look(AppAppearance::system, connectTo(bus.address()));
    int told = 0;
    QObject::connect(&look, &DesktopLook::changed, [&] { ++told; });
    EXPECT_FALSE(look.hasHighContrast()) << "nobody waits for the portal";
    runUntil([&] { return told == 1; });
    EXPECT_TRUE(look.isDark());
    EXPECT_TRUE(look.hasHighContrast());
    EXPECT_TRUE(look.hasReducedMotion());

    const auto change = [&](const char* key, unsigned value) {
        const int before = told;
        portal.emitSignal(QStringLiteral("SettingChanged"),
                          {kCommon, QString::fromLatin1(key), QVariant::fromValue(QDBusVariant(value))});
        runUntil([&] { return told > before; });
    };
    change("color-scheme", 2);
    EXPECT_FALSE(look.isDark());
    change("contrast", 0);
    EXPECT_FALSE(look.hasHighContrast());
    look.setAppearance(AppAppearance::dark);
    EXPECT_TRUE(look.isDark()) << "the user's choice for this program comes first";
}

TEST(DesktopLookTest, WithoutAPortalThePaletteSaysIt)
{
    const SessionBus bus;
    DesktopLook look(AppAppearance::system, connectTo(bus.address()));
    const auto before = QGuiApplication::palette();
    for (const auto* colour : {"black", "white"}) {
        QGuiApplication::setPalette(QPalette(QColor(QLatin1String(colour))));
        EXPECT_EQ(look.isDark(), QLatin1String(colour) == QLatin1String("black"));
    }
    QGuiApplication::setPalette(before);
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    EXPECT_TRUE(look.isMirrored());
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    EXPECT_FALSE(look.isMirrored());
}

} // namespace
