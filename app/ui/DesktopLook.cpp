#include "app/ui/DesktopLook.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <QtDBus/QDBusVariant>
#include <QtGui/QGuiApplication>
#include <QtGui/QPalette>

#include <QEvent>
#include <QMap>
#include <QStringList>

namespace vocalith {
namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kAppearance = QStringLiteral("org.freedesktop.appearance");
const QString kDesktopInterface = QStringLiteral("org.gnome.desktop.interface");
const QString kAccessibilityInterface = QStringLiteral("org.gnome.desktop.a11y.interface");

} // namespace

DesktopLook::DesktopLook(AppAppearance appearance) : DesktopLook(appearance, QDBusConnection::sessionBus())
{}

DesktopLook::DesktopLook(AppAppearance appearance, const QDBusConnection& bus) : m_appearance(appearance)
{
    qGuiApp->installEventFilter(this);
    ask(bus);
}

DesktopLook::~DesktopLook() = default;

void DesktopLook::ask(const QDBusConnection& bus)
{
    if (!bus.isConnected())
        return;
    qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
    auto connection = bus;
    connection.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                       SLOT(settingChanged(QDBusMessage)));
    auto question = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("ReadAll"));
    question << QStringList{kAppearance, kDesktopInterface, kAccessibilityInterface};
    auto* answer = new QDBusPendingCallWatcher(connection.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* call) {
        call->deleteLater();
        const QDBusPendingReply<QMap<QString, QVariantMap>> reply = *call;
        if (reply.isError()) // no portal: the palette says it
            return;
        const auto spaces = reply.value();
        for (auto space = spaces.begin(); space != spaces.end(); ++space) {
            for (auto setting = space->begin(); setting != space->end(); ++setting)
                take(space.key(), setting.key(), setting.value());
        }
        Q_EMIT changed();
    });
}

void DesktopLook::settingChanged(const QDBusMessage& change)
{
    const auto arguments = change.arguments();
    if (arguments.size() != 3)
        return;
    take(arguments[0].toString(), arguments[1].toString(), arguments[2].value<QDBusVariant>().variant());
    Q_EMIT changed();
}

/// After the documents of org.freedesktop.portal.Settings; the desktop's own keys are for portals that do not have the
/// common ones yet.
void DesktopLook::take(const QString& space, const QString& key, const QVariant& value)
{
    if (space == kAppearance && key == QLatin1String("color-scheme"))
        m_scheme = value.toUInt() == 1 ? Scheme::dark : value.toUInt() == 2 ? Scheme::light : Scheme::unknown;
    else if (space == kAppearance && key == QLatin1String("contrast"))
        m_highContrast = value.toUInt() == 1;
    else if (space == kAppearance && key == QLatin1String("reduced-motion"))
        m_reducedMotion = value.toUInt() == 1;
    else if (space == kDesktopInterface && key == QLatin1String("enable-animations"))
        m_animations = value.toBool();
    else if (space == kAccessibilityInterface && key == QLatin1String("high-contrast"))
        m_highContrast = value.toBool();
}

void DesktopLook::setAppearance(AppAppearance appearance)
{
    m_appearance = appearance;
    Q_EMIT changed();
}

bool DesktopLook::isDark() const
{
    switch (m_appearance) {
    case AppAppearance::light: return false;
    case AppAppearance::dark: return true;
    case AppAppearance::system: break;
    }
    if (m_scheme != Scheme::unknown)
        return m_scheme == Scheme::dark;
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

bool DesktopLook::isMirrored() const
{
    return QGuiApplication::layoutDirection() == Qt::RightToLeft;
}

bool DesktopLook::eventFilter(QObject* watched, QEvent* event)
{
    const auto type = event->type();
    if (watched == qGuiApp &&
        (type == QEvent::ApplicationPaletteChange || type == QEvent::ApplicationLayoutDirectionChange))
        Q_EMIT changed();
    return QObject::eventFilter(watched, event);
}

} // namespace vocalith
