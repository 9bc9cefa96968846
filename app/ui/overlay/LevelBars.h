#pragma once

#include <QtQuick/QQuickPaintedItem>

#include <QtGui/QColor>

namespace vocalith {

class OverlayModel;

/// Draws the meter's last readings as bars, the newest at the end of the line of writing. One item rather than one for
/// each bar: it is redrawn many times a second.
class LevelBars : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QObject* model READ model WRITE setModel NOTIFY modelChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    Q_PROPERTY(bool fading READ isFading WRITE setFading NOTIFY fadingChanged)
    Q_PROPERTY(bool mirrored READ isMirrored WRITE setMirrored NOTIFY mirroredChanged)

public:
    explicit LevelBars(QQuickItem* parent = nullptr);

    QObject* model() const;
    void setModel(QObject* model);
    QColor color() const { return m_color; }
    void setColor(const QColor& color);
    bool isFading() const { return m_isFading; } ///< whether older readings are paler
    void setFading(bool fading);
    bool isMirrored() const { return m_isMirrored; }
    void setMirrored(bool mirrored);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void modelChanged();
    void colorChanged();
    void fadingChanged();
    void mirroredChanged();

private:
    OverlayModel* m_model = nullptr;
    QColor m_color;
    bool m_isFading = true;
    bool m_isMirrored = false;
};

} // namespace vocalith
