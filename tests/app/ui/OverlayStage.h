#pragma once

#include "app/ui/DesktopLook.h"
#include "app/ui/overlay/OverlayModel.h"
#include "app/ui/overlay/OverlayScene.h"
#include "tests/support/FakeClock.h"

#include <QtDBus/QDBusConnection>

namespace vocalith::test {

/// The overlay without a window: what it shows comes from the test.
struct OverlayStage {
    explicit OverlayStage(RecordingDisplayStyle style = RecordingDisplayStyle::panel) : scene(model, look, style) {}

    void record()
    {
        model.showPrompt({"Dictate", {"Dictate", "E-mail"}});
        model.show(state);
        model.showIndicator(ProcessingIndicator::State::starting);
    }
    void end(const DictationOutcome& outcome)
    {
        model.show(OverlayHidden{});
        model.dictationEnded(outcome);
        clock.advance(std::chrono::milliseconds(0));
    }
    /// As the recorder publishes a reading of the meter, twice.
    void hear(float level)
    {
        for (const float step : {0.0F, 0.01F})
            levels.set(std::vector<float>(24, level + step));
    }

    FakeClock clock;
    Observable<std::vector<float>> levels{std::vector<float>(24)};
    Observable<double> elapsedTime;
    OverlayModel model{levels, elapsedTime, clock};
    DesktopLook look{AppAppearance::dark, QDBusConnection(QStringLiteral("none"))};
    OverlayScene scene;
    OverlayState state{Uuid::random(), {}, {}};
};

} // namespace vocalith::test
