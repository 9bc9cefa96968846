#pragma once

#include "app/ui/DesktopLook.h"
#include "app/ui/overlay/OverlayModel.h"
#include "app/ui/overlay/OverlayPresenter.h"
#include "app/ui/overlay/OverlayScene.h"
#include "app/ui/overlay/OverlayWindow.h"

#include <memory>

namespace vocalith {

class AudioRecordingManager;
class DesktopPorts;
class PersistentAppStorage;
class PixelSurface;

/// The overlay with all that it is made of: its window is one of the display's, or a surface of the compositor's where
/// that is what stays out of the focus. Main thread.
class OverlayHost {
public:
    OverlayHost(AudioRecordingManager& recorder, DesktopPorts& ports, PersistentAppStorage& storage, Clock& clock);

    OverlayModel& model() { return m_model; }
    DesktopLook& look() { return m_look; }
    Task<void> shutDown() { return m_presenter.shutDown(); }

private:
    OverlayModel m_model;
    DesktopLook m_look;
    OverlayScene m_scene;
    const std::unique_ptr<PixelSurface> m_surface;
    const std::unique_ptr<OverlayWindow> m_window;
    OverlayPresenter m_presenter;
    std::vector<Subscription> m_settings;
};

} // namespace vocalith
