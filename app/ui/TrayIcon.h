#pragma once

#include "app/ui/TrayServices.h"

#include <QObject>

#include <memory>
#include <vector>

class QAction;
class QActionGroup;
class QDBusConnection;
class QIcon;
class QMenu;
class QSystemTrayIcon;
class QTimer;

namespace vocalith {

/// The program's place among the status icons, with its menu. The composition owns it; main thread; it needs a
/// QApplication. A desktop whose tray comes up later than the program gets the icon then.
class TrayIcon final : public QObject {
    Q_OBJECT

public:
    TrayIcon(TrayState& state, TrayActions actions);
    /// `bus` is where the tray is looked for: the session bus, or a test's.
    TrayIcon(TrayState& state, TrayActions actions, const QDBusConnection& bus);
    ~TrayIcon() override;

    /// Whether the user wants it there.
    void setWanted(bool wanted);

private Q_SLOTS:
    void findTray();

private:
    void makeMenu();
    QAction* addAction(const QString& title, const std::function<void()>& action);
    void fill(QMenu& menu, const TrayChoice& choice, const std::function<void(const std::string&)>& choose);
    void makeIcon();
    void update();

    TrayState& m_state;
    const TrayActions m_actions;
    const std::unique_ptr<QDBusConnection> m_bus;
    bool m_isWanted = true;

    std::unique_ptr<QMenu> m_menu;
    QAction* m_startOrStop = nullptr;
    QAction* m_lastText = nullptr;
    QMenu* m_prompts = nullptr;
    QMenu* m_models = nullptr;
    std::unique_ptr<QSystemTrayIcon> m_icon;
    std::unique_ptr<QTimer> m_patience; ///< until a tray of the older kind is made do with
    std::vector<Subscription> m_subscriptions;
};

} // namespace vocalith
