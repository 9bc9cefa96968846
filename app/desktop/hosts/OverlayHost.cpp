#include "app/desktop/hosts/OverlayHost.h"

#include "app/desktop/ports/DesktopPorts.h"
#include "app/ui/overlay/OverlayPixelWindow.h"
#include "app/ui/overlay/OverlayQuickWindow.h"
#include "core/audio/AudioRecordingManager.h"
#include "core/storage/settings/PersistentAppStorage.h"

namespace vocalith {
namespace {

std::unique_ptr<OverlayWindow> window(OverlayScene& scene, PixelSurface* surface, const DesktopPorts& ports)
{
    if (surface)
        return std::make_unique<OverlayPixelWindow>(scene, *surface);
    return std::make_unique<OverlayQuickWindow>(scene, [&ports] { return ports.isComposited(); });
}

} // namespace

OverlayHost::OverlayHost(AudioRecordingManager& recorder, DesktopPorts& ports, PersistentAppStorage& storage,
                         Clock& clock)
    : m_model(recorder.visualAudioLevels, recorder.elapsedTime, clock), m_look(storage.appAppearance.get()),
      m_scene(m_model, m_look, storage.recordingDisplayStyle.get()), m_surface(ports.takeOverlaySurface()),
      m_window(window(m_scene, m_surface.get(), ports)), m_presenter(m_model, *m_window, ports.focusedApp())
{
    m_settings.push_back(
        storage.appAppearance.subscribe([this](const auto& appearance) { m_look.setAppearance(appearance); }));
    m_settings.push_back(
        storage.recordingDisplayStyle.subscribe([this](const auto& style) { m_scene.setStyle(style); }));
}

} // namespace vocalith
