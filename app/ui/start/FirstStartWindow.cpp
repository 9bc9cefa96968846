#include "app/ui/start/FirstStartWindow.h"

#include "app/ui/DesktopLook.h"
#include "app/ui/UiResources.h"
#include "app/ui/start/FirstStartModel.h"

#include <QtGui/QKeyEvent>
#include <QtQml/QQmlError>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickView>

#include <QCoreApplication>
#include <QDebug>

namespace vocalith {

FirstStartWindow::FirstStartWindow(FirstStartModel& model, DesktopLook& look)
    : m_model(model), m_view(std::make_unique<QQuickView>())
{
    loadUiResources();
    m_view->setTitle(QCoreApplication::translate("Vocalith", "Welcome to Vocalith"));
    m_view->setInitialProperties({{QStringLiteral("start"), QVariant::fromValue<QObject*>(&model)},
                                  {QStringLiteral("look"), QVariant::fromValue<QObject*>(&look)}});
    m_view->setResizeMode(QQuickView::SizeRootObjectToView);
    m_view->setSource(QUrl(QStringLiteral("qrc:/vocalith/ui/qml/FirstStart.qml")));
    if (m_view->status() != QQuickView::Ready) // the scene is part of the program: this is a bug, not a failure
        qFatal("%s", qPrintable(m_view->errors().value(0).toString()));
    m_view->setMinimumSize({560, 460});
    m_view->installEventFilter(this);
    connect(&m_model, &FirstStartModel::finished, m_view.get(), &QWindow::hide);
}

FirstStartWindow::~FirstStartWindow() = default;

void FirstStartWindow::show()
{
    m_view->show();
    m_view->raise();
    m_view->requestActivate();
}

bool FirstStartWindow::isActive() const
{
    return m_view->isActive();
}

bool FirstStartWindow::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease: {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        if (!m_model.isRecordingShortcut())
            break;
        if (!key.isAutoRepeat())
            m_model.handleKey(key.nativeScanCode(), key.modifiers(), event->type() == QEvent::KeyPress);
        return true;
    }
    case QEvent::FocusOut: m_model.stopRecordingShortcut(); break;
    case QEvent::Close: m_model.finish(); break;
    default: break;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace vocalith
