#include "app/ui/overlay/LevelBars.h"

#include "app/ui/overlay/OverlayModel.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>

namespace vocalith {

LevelBars::LevelBars(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

QObject* LevelBars::model() const
{
    return m_model;
}

void LevelBars::setModel(QObject* model)
{
    auto* overlay = qobject_cast<OverlayModel*>(model);
    if (overlay == m_model)
        return;
    if (m_model)
        m_model->disconnect(this);
    m_model = overlay;
    if (m_model) {
        connect(m_model, &OverlayModel::levelsChanged, this, [this] { update(); });
        connect(m_model, &QObject::destroyed, this, [this] { m_model = nullptr; });
    }
    update();
    Q_EMIT modelChanged();
}

void LevelBars::setColor(const QColor& color)
{
    if (color == m_color)
        return;
    m_color = color;
    update();
    Q_EMIT colorChanged();
}

void LevelBars::setFading(bool fading)
{
    if (fading == m_isFading)
        return;
    m_isFading = fading;
    update();
    Q_EMIT fadingChanged();
}

void LevelBars::setMirrored(bool mirrored)
{
    if (mirrored == m_isMirrored)
        return;
    m_isMirrored = mirrored;
    update();
    Q_EMIT mirroredChanged();
}

void LevelBars::paint(QPainter* painter)
{
    if (!m_model || m_model->levels().empty())
        return;
    const auto& levels = m_model->levels();
    const auto count = levels.size();
    const double step = width() / static_cast<double>(count);
    const double thickness = std::max(2.0, std::min(std::round(step * 0.55), 6.0));
    painter->setPen(Qt::NoPen);
    painter->setRenderHint(QPainter::Antialiasing);
    for (std::size_t index = 0; index < count; ++index) {
        // The square root lets quiet speech be seen.
        const double level = std::sqrt(std::clamp(static_cast<double>(levels[index]), 0.0, 1.0));
        const double age = static_cast<double>(index) / static_cast<double>(count);
        QColor color = m_color;
        if (m_isFading)
            color.setAlphaF(static_cast<float>(color.alphaF() * (0.35 + 0.65 * age)));
        const double tall = thickness + level * (height() - thickness);
        const auto place = static_cast<double>(m_isMirrored ? count - 1 - index : index);
        const double left = place * step + (step - thickness) / 2;
        painter->setBrush(color);
        painter->drawRoundedRect(QRectF(left, (height() - tall) / 2, thickness, tall), thickness / 2, thickness / 2);
    }
}

} // namespace vocalith
