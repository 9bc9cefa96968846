#include "app/ui/overlay/OverlayScene.h"

#include "app/ui/DesktopLook.h"
#include "app/ui/UiResources.h"
#include "app/ui/overlay/LevelBars.h"
#include "app/ui/overlay/OverlayModel.h"

#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>
#include <QtQuick/QSGRendererInterface>

#include <QDebug>
#include <QSize>
#include <QUrl>

#include <cmath>

namespace vocalith {

OverlayScene::OverlayScene(OverlayModel& model, DesktopLook& look, RecordingDisplayStyle style)
    : m_engine(std::make_unique<QQmlEngine>()), m_style(style)
{
    loadUiResources();
    QQmlComponent component(m_engine.get(), QUrl(QStringLiteral("qrc:/vocalith/ui/qml/Overlay.qml")));
    auto* object =
        component.createWithInitialProperties({{QStringLiteral("overlay"), QVariant::fromValue<QObject*>(&model)},
                                               {QStringLiteral("look"), QVariant::fromValue<QObject*>(&look)},
                                               {QStringLiteral("notch"), style == RecordingDisplayStyle::notch}});
    m_root.reset(qobject_cast<QQuickItem*>(object));
    if (!m_root) // the scene is part of the program: this is a bug, not a failure
        qFatal("%s", qPrintable(component.errorString()));
    connect(m_root.get(), &QQuickItem::implicitHeightChanged, this, &OverlayScene::sizeChanged);
    connect(m_root.get(), &QQuickItem::implicitWidthChanged, this, &OverlayScene::sizeChanged);
}

OverlayScene::~OverlayScene() = default;

void OverlayScene::setStyle(RecordingDisplayStyle style)
{
    m_style = style;
    m_root->setProperty("notch", style == RecordingDisplayStyle::notch);
    Q_EMIT sizeChanged();
}

void OverlayScene::setSeesThrough(bool seesThrough)
{
    m_root->setProperty("seesThrough", seesThrough);
}

int OverlayScene::radius() const
{
    return m_root->property("radius").toInt();
}

QSize OverlayScene::size() const
{
    return {static_cast<int>(std::ceil(m_root->implicitWidth())),
            static_cast<int>(std::ceil(m_root->implicitHeight()))};
}

void useSoftwareRendering()
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

} // namespace vocalith
