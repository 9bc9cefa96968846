#include "app/overlay/RemoteControl.h"

#include "app/overlay/OverlayManager.h"
#include "base/Text.h"
#include "core/session/ConfigurationManager.h"
#include "core/session/KeyboardActivationState.h"
#include "models/MainAppURL.h"
#include "ports/ScreenLock.h"

namespace vocalith {
namespace {

constexpr const char* kNothingRuns = "No dictation is running.";

} // namespace

RemoteControl::RemoteControl(ShortcutNotifier& notifier, const OverlayManager& overlay,
                             const ConfigurationManager& configuration, const ScreenLock& screenLock,
                             std::function<void()> present)
    : m_notifier(notifier), m_overlay(overlay), m_configuration(configuration), m_screenLock(screenLock),
      m_present(std::move(present))
{}

Result<void, std::string> RemoteControl::carryOut(const InstanceRequest& request)
{
    using Action = InstanceRequest::Action;
    if (m_isClosed)
        return failure(std::string("Vocalith is just ending. Start it again in a moment."));
    switch (request.action) {
    case Action::start: return start(request.argument);
    case Action::stop: return stop();
    case Action::toggle: return m_overlay.phase.get() == DictationPhase::recording ? stop() : start(request.argument);
    case Action::cancel: return cancel();
    case Action::present: m_present(); return {};
    case Action::open: return open(request.argument);
    }
    return {};
}

Result<void, std::string> RemoteControl::start(const std::string& prompt)
{
    if (m_overlay.phase.get() == DictationPhase::recording)
        return failure(std::string("A dictation is running already. End it with: vocalith stop"));
    if (m_overlay.phase.get() == DictationPhase::processing)
        return failure(std::string("The last dictation is still being written down. Try again in a moment."));
    if (m_screenLock.isLocked.get())
        return failure(std::string("The screen is locked. Unlock it, then start the dictation again."));
    const auto shortcut = shortcutFor(prompt);
    if (!shortcut)
        return failure(shortcut.error());
    m_notifier.state.set(keyboard_activation::Idle{});
    m_notifier.state.set(keyboard_activation::Activated{*shortcut});
    return {};
}

Result<void, std::string> RemoteControl::stop()
{
    if (m_overlay.phase.get() != DictationPhase::recording)
        return failure(std::string(kNothingRuns));
    const auto shortcut = shortcutFor({});
    if (!shortcut)
        return failure(shortcut.error());
    const auto* running = std::get_if<keyboard_activation::Activated>(&m_notifier.state.get());
    m_notifier.state.set(keyboard_activation::Completed{running ? running->shortcutID : *shortcut});
    return {};
}

Result<void, std::string> RemoteControl::cancel()
{
    if (m_overlay.phase.get() == DictationPhase::idle)
        return failure(std::string(kNothingRuns));
    m_notifier.escapeTriggered.emit();
    return {};
}

Result<void, std::string> RemoteControl::open(const std::string& link)
{
    const auto url = MainAppURL::parse(link);
    if (!url)
        return failure("Vocalith does not know the link \"" + link + "\".");
    switch (url->route) {
    case MainAppURL::Route::startSession: return start({});
    case MainAppURL::Route::stopLiveActivity: return stop();
    case MainAppURL::Route::base: m_present(); return {};
    case MainAppURL::Route::transcribeFile:
        return failure(std::string("Files are transcribed on the command line: vocalith transcribe FILE"));
    case MainAppURL::Route::subscriptionNeeded:
        return failure(std::string("There is nothing to subscribe to: Vocalith works without an account."));
    }
    return {};
}

Result<Uuid, std::string> RemoteControl::shortcutFor(const std::string& prompt) const
{
    const auto& configuration = m_configuration.configuration();
    if (!configuration || configuration->shortcuts.empty())
        return failure(std::string("Vocalith is still starting. Try again in a moment."));
    if (prompt.empty())
        return configuration->shortcuts.front().id; // the main one, which is for the prompt that is chosen
    std::string known;
    for (const auto& candidate : configuration->prompts) {
        if (sameIgnoringCase(candidate.name, prompt))
            return candidate.id;
        known += (known.empty() ? "\"" : ", \"") + candidate.name + "\"";
    }
    return failure("There is no prompt \"" + prompt + "\". There are: " + known + ".");
}

} // namespace vocalith
