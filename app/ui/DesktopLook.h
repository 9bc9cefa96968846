#pragma once

#include "base/Observable.h"
#include "models/AppAppearance.h"

#include <QObject>
#include <QString>
#include <QVariant>

#include <memory>

class QDBusConnection;
class QDBusMessage;

namespace vocalith {

/// How the user wants windows to look: light or dark, with high contrast, without motion, and in which direction. It
/// asks the desktop's settings portal, and follows it; without one the colours of Qt's own palette say what is dark.
/// The composition owns it; main thread. It never waits for an answer: until one has come the defaults hold.
class DesktopLook final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool dark READ isDark NOTIFY changed)
    Q_PROPERTY(bool highContrast READ hasHighContrast NOTIFY changed)
    Q_PROPERTY(bool reducedMotion READ hasReducedMotion NOTIFY changed)
    Q_PROPERTY(bool mirrored READ isMirrored NOTIFY changed)

public:
    explicit DesktopLook(AppAppearance appearance);
    /// `bus` is the session bus, or a test's.
    DesktopLook(AppAppearance appearance, const QDBusConnection& bus);
    ~DesktopLook() override;

    /// What the user has chosen for this program.
    void setAppearance(AppAppearance appearance);

    bool isDark() const;
    bool hasHighContrast() const { return m_highContrast; }
    bool hasReducedMotion() const { return m_reducedMotion || !m_animations; }
    bool isMirrored() const; ///< written from right to left

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void settingChanged(const QDBusMessage& change);

private:
    void ask(const QDBusConnection& bus);
    void take(const QString& space, const QString& key, const QVariant& value);
    bool eventFilter(QObject* watched, QEvent* event) override;

    enum class Scheme { unknown, dark, light };

    AppAppearance m_appearance;
    Scheme m_scheme = Scheme::unknown;
    bool m_highContrast = false;
    bool m_reducedMotion = false;
    bool m_animations = true;
};

} // namespace vocalith
