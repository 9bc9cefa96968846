// What the overlay costs, drawn by the processor on an X display of its own: the share of one core while it follows a
// voice, what is left of that once it is hidden, and how long after the call it stands on the screen.

#include "app/ui/DesktopLook.h"
#include "app/ui/overlay/OverlayModel.h"
#include "app/ui/overlay/OverlayQuickWindow.h"
#include "app/ui/overlay/OverlayScene.h"
#include "tests/support/XDisplay.h"

#include <QtGui/QGuiApplication>
#include <QtQuick/QQuickWindow>

#include <sys/resource.h>

#include <chrono>
#include <cmath>
#include <cstdio>

using namespace vocalith;
using namespace std::chrono_literals;

namespace {

constexpr double kMostWhileShown = 0.03; // of one core
constexpr double kMostWhileHidden = 0.0005;
constexpr double kOneFrame = 1000.0 / 60; // milliseconds
constexpr Duration kMeterInterval = 30ms; // as the recorder publishes its levels
constexpr auto kMeasured = 10s;

double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

class Stage {
public:
    Stage() : m_window(m_scene, {})
    {
        QObject::connect(&m_model, &OverlayModel::visibleChanged, &m_window,
                         [this] { m_model.isVisible() ? m_window.show() : m_window.hide(); });
        QObject::connect(&m_window.window(), &QQuickWindow::frameSwapped, &m_window, [this] { ++m_frames; });
    }

    /// Milliseconds until the first picture has been handed to the display.
    double show()
    {
        const int before = m_frames;
        const auto start = std::chrono::steady_clock::now();
        m_model.showPrompt({"Dictate", {"Dictate", "E-mail", "Translate"}});
        m_model.show(OverlayState{Uuid::random(), {}, {}});
        m_model.showIndicator(ProcessingIndicator::State::starting);
        while (m_frames == before)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    }
    void hide()
    {
        m_model.show(OverlayHidden{});
        m_model.dictationEnded(dictation_outcome::Cancelled{});
        while (m_window.window().isVisible())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    /// The share of one core over some seconds, with a voice or in silence.
    double measure(bool speaks)
    {
        bool isOver = false;
        const auto end = m_clock.after(kMeasured, [&isOver] { isOver = true; });
        const auto start = std::chrono::steady_clock::now();
        const double before = processorSeconds();
        if (speaks)
            nextReading();
        while (!isOver)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        m_meter.reset();
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
        return (processorSeconds() - before) / passed.count();
    }
    int frames() const { return m_frames; }

private:
    void nextReading()
    {
        auto levels = m_levels.get();
        levels.erase(levels.begin());
        ++m_reading;
        levels.push_back(static_cast<float>(0.5 + 0.4 * std::sin(m_reading * 0.9) * std::cos(m_reading * 0.13)));
        m_levels.set(std::move(levels));
        m_elapsedTime.set(std::floor(m_reading * 0.03));
        m_meter = m_clock.after(kMeterInterval, [this] { nextReading(); });
    }

    SystemClock m_clock;
    Observable<std::vector<float>> m_levels{std::vector<float>(24)};
    Observable<double> m_elapsedTime;
    OverlayModel m_model{m_levels, m_elapsedTime, m_clock};
    DesktopLook m_look{AppAppearance::dark};
    OverlayScene m_scene{m_model, m_look, RecordingDisplayStyle::panel};
    OverlayQuickWindow m_window;
    Timer m_meter;
    int m_reading = 0;
    int m_frames = 0;
};

std::unique_ptr<test::XDisplay> makeDisplay(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    return std::make_unique<test::XDisplay>();
}

} // namespace

int main(int argc, char** argv)
{
    const auto display = makeDisplay(argc, argv);
    for (const auto& entry : display->environment()) {
        const auto equals = entry.find('=');
        qputenv(entry.substr(0, equals).c_str(), QByteArray::fromStdString(entry.substr(equals + 1)));
    }
    useSoftwareRendering();
    const QGuiApplication application(argc, argv);
    Stage stage;
    const double first = stage.show();
    stage.hide();
    const double again = stage.show();
    const int before = stage.frames();
    const double shown = stage.measure(true);
    const int frames = stage.frames() - before;
    stage.hide();
    const double hidden = stage.measure(false);
    std::printf("on the screen after %.1f ms, then %.1f ms (limit %.1f)\n", first, again, kOneFrame);
    std::printf("while recording: %.2f %% of a core, %d pictures in 10 s (limit %.0f %%)\n", shown * 100, frames,
                kMostWhileShown * 100);
    std::printf("while hidden: %.3f %% of a core (limit %.2f %%)\n", hidden * 100, kMostWhileHidden * 100);
    const bool good = shown <= kMostWhileShown && hidden <= kMostWhileHidden && again <= kOneFrame;
    return good ? 0 : 1;
}
