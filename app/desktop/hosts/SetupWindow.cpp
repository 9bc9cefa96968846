#include "app/desktop/hosts/SetupWindow.h"

#include "app/overlay/ShortcutSuspension.h"
#include "app/ui/start/FirstStartWindow.h"
#include "base/MainThread.h"
#include "core/session/shortcuts/KeyboardShortcutRecordingService.h"
#include "core/storage/settings/PersistentAppStorage.h"

namespace vocalith {

struct SetupWindow::Window {
    Window(const Services& services, MicrophoneCheck& microphone, const Logger& logger)
        : recorder(services.storage.mainPrompt.get().shortcut.id, services.storage, services.keyRequired, logger),
          model(recorder, microphone, services.storage, services.clock), window(model, services.look)
    {
        recording = recorder.recordingInProgress.subscribe(
            [&suspension = services.suspension](bool isRecording) { suspension.setRecordingShortcut(isRecording); });
    }

    KeyboardShortcutRecordingService recorder;
    FirstStartModel model;
    FirstStartWindow window;
    Subscription recording;
};

SetupWindow::SetupWindow(Services services, Logger logger)
    : m_services(services), m_logger(std::move(logger)), m_microphone(services.input, services.clock)
{}

SetupWindow::~SetupWindow() = default;

void SetupWindow::show()
{
    if (!m_window) {
        m_window = std::make_unique<Window>(m_services, m_microphone.check(), m_logger);
        // It is still on the stack when it says that it is finished.
        QObject::connect(&m_window->model, &FirstStartModel::finished,
                         [this] { postToMainThread([window = std::shared_ptr<Window>(std::move(m_window))] {}); });
    }
    m_window->window.show();
}

bool SetupWindow::insert(const std::string& text)
{
    return m_window && m_window->window.isActive() && m_window->model.insert(text);
}

Task<void> SetupWindow::shutDown()
{
    m_window.reset();
    co_await m_microphone.shutDown();
}

} // namespace vocalith
