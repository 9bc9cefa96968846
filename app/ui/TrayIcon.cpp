#include "app/ui/TrayIcon.h"

#include "app/ui/UiResources.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <QtDBus/QDBusServiceWatcher>
#include <QtDBus/QDBusVariant>
#include <QtGui/QAction>
#include <QtGui/QActionGroup>
#include <QtGui/QIcon>
#include <QtGui/QPainter>
#include <QtGui/QPixmap>
#include <QtSvg/QSvgRenderer>
#include <QtWidgets/QMenu>
#include <QtWidgets/QSystemTrayIcon>

#include <QCoreApplication>
#include <QTimer>

#include <chrono>

namespace vocalith {
namespace {

using namespace std::chrono_literals;

/// Of the StatusNotifierItem protocol.
const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kWatcherPath = QStringLiteral("/StatusNotifierWatcher");
constexpr auto kPatience = 5s;

QString translated(const char* text)
{
    return QCoreApplication::translate("Vocalith", text);
}

QString fileOf(TrayPhase phase)
{
    switch (phase) {
    case TrayPhase::idle: return QStringLiteral(":/vocalith/ui/icons/idle.svg");
    case TrayPhase::recording: return QStringLiteral(":/vocalith/ui/icons/recording.svg");
    case TrayPhase::processing: return QStringLiteral(":/vocalith/ui/icons/processing.svg");
    }
    return {};
}

QIcon iconOf(TrayPhase phase)
{
    QSvgRenderer drawing(fileOf(phase));
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64}) {
        QPixmap picture(size, size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        drawing.render(&painter);
        painter.end();
        icon.addPixmap(picture);
    }
    return icon;
}

QString titleOf(TrayPhase phase)
{
    switch (phase) {
    case TrayPhase::idle: return translated("Vocalith");
    case TrayPhase::recording: return translated("Vocalith: recording");
    case TrayPhase::processing: return translated("Vocalith: processing");
    }
    return {};
}

} // namespace

TrayIcon::TrayIcon(TrayState& state, TrayActions actions)
    : TrayIcon(state, std::move(actions), QDBusConnection::sessionBus())
{}

TrayIcon::TrayIcon(TrayState& state, TrayActions actions, const QDBusConnection& bus)
    : m_state(state), m_actions(std::move(actions)), m_bus(std::make_unique<QDBusConnection>(bus)),
      m_patience(std::make_unique<QTimer>())
{
    loadUiResources();
    makeMenu();
    const auto updated = [this](const auto&) { update(); };
    m_subscriptions.push_back(m_state.phase.subscribe(updated));
    m_subscriptions.push_back(m_state.hasLastText.subscribe(updated));
    m_subscriptions.push_back(m_state.prompts.subscribe(
        [this](const TrayChoice& prompts) { fill(*m_prompts, prompts, m_actions.choosePrompt); }));
    m_subscriptions.push_back(
        m_state.models.subscribe([this](const TrayChoice& models) { fill(*m_models, models, m_actions.chooseModel); }));

    // Qt asks for the tray once, when the first icon is made, and never again: so that is done when there is one.
    m_patience->setSingleShot(true);
    connect(m_patience.get(), &QTimer::timeout, this, &TrayIcon::makeIcon);
    m_patience->start(kPatience);
    if (!m_bus->isConnected())
        return;
    auto* watcher = new QDBusServiceWatcher(kWatcher, *m_bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &TrayIcon::findTray);
    m_bus->connect(kWatcher, kWatcherPath, kWatcher, QStringLiteral("StatusNotifierHostRegistered"), this,
                   SLOT(findTray()));
    findTray();
}

TrayIcon::~TrayIcon() = default;

void TrayIcon::findTray()
{
    if (m_icon)
        return;
    auto question = QDBusMessage::createMethodCall(
        kWatcher, kWatcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << kWatcher << QStringLiteral("IsStatusNotifierHostRegistered");
    auto* answer = new QDBusPendingCallWatcher(m_bus->asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* call) {
        call->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *call;
        if (reply.isValid() && reply.value().variant().toBool())
            makeIcon();
    });
}

void TrayIcon::makeIcon()
{
    m_patience->stop();
    if (m_icon)
        return;
    m_icon = std::make_unique<QSystemTrayIcon>();
    m_icon->setContextMenu(m_menu.get());
    connect(m_icon.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::MiddleClick)
            m_actions.startOrStop();
    });
    update();
    m_icon->setVisible(m_isWanted);
}

void TrayIcon::setWanted(bool wanted)
{
    m_isWanted = wanted;
    if (m_icon)
        m_icon->setVisible(wanted);
}

QAction* TrayIcon::addAction(const QString& title, const std::function<void()>& action)
{
    auto* added = m_menu->addAction(title);
    connect(added, &QAction::triggered, this, [action] { action(); });
    return added;
}

void TrayIcon::makeMenu()
{
    m_menu = std::make_unique<QMenu>();
    m_startOrStop = addAction({}, m_actions.startOrStop);
    m_menu->addSeparator();
    m_prompts = m_menu->addMenu(translated("Prompt"));
    m_models = m_menu->addMenu(translated("Model"));
    m_menu->addSeparator();
    m_lastText = addAction(translated("Last Text Again"), m_actions.repeatLastText);
    addAction(translated("History Folder"), m_actions.openHistory);
    addAction(translated("Settings File"), m_actions.openSettings);
    m_menu->addSeparator();
    addAction(translated("Quit"), m_actions.quit);
    fill(*m_prompts, m_state.prompts.get(), m_actions.choosePrompt);
    fill(*m_models, m_state.models.get(), m_actions.chooseModel);
    update();
}

void TrayIcon::fill(QMenu& menu, const TrayChoice& choice, const std::function<void(const std::string&)>& choose)
{
    menu.clear();
    qDeleteAll(menu.findChildren<QActionGroup*>());
    auto* group = new QActionGroup(&menu);
    for (const auto& entry : choice.entries) {
        // an ampersand in a name is no mnemonic
        const auto title = QString::fromStdString(entry.title).replace(QLatin1Char('&'), QStringLiteral("&&"));
        auto* action = menu.addAction(title);
        action->setCheckable(true);
        action->setChecked(entry.id == choice.chosen);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [choose, id = entry.id] { choose(id); });
    }
    menu.setEnabled(!choice.entries.empty());
}

void TrayIcon::update()
{
    const auto phase = m_state.phase.get();
    m_startOrStop->setText(phase == TrayPhase::recording ? translated("Stop Dictation")
                                                         : translated("Start Dictation"));
    m_startOrStop->setEnabled(phase != TrayPhase::processing);
    m_lastText->setEnabled(m_state.hasLastText.get());
    if (!m_icon)
        return;
    m_icon->setIcon(iconOf(phase));
    m_icon->setToolTip(titleOf(phase));
}

} // namespace vocalith
