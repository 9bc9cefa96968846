#pragma once

#include <QObject>

#include <memory>

class QQmlEngine;
class QQuickView;

namespace vocalith {

class DesktopLook;
class FirstStartModel;

/// The window of the first start. The composition makes it only then, and drops it after `FirstStartModel::finished`;
/// main thread. Closing the window finishes too.
class FirstStartWindow final : public QObject {
    Q_OBJECT

public:
    FirstStartWindow(FirstStartModel& model, DesktopLook& look);
    ~FirstStartWindow() override;

    void show();
    bool isActive() const; ///< it has the keyboard focus
    QQuickView& view() { return *m_view; }

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    FirstStartModel& m_model;
    std::unique_ptr<QQuickView> m_view;
};

} // namespace vocalith
