#include "app/desktop/hosts/TrayHost.h"

#include "app/cli/models/ModelReport.h"
#include "app/overlay/RemoteControl.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "ports/AppLauncher.h"
#include "ports/Notices.h"

#include <system_error>

namespace vocalith {

TrayHost::TrayHost(const Services& services, std::function<void()> quit)
    : m_services(services), m_icon(m_state, actions(std::move(quit))),
      m_lastText(services.history, services.output, services.notices)
{
    m_icon.setWanted(false);
}

void TrayHost::start()
{
    auto& storage = m_services.storage;
    const auto follow = [this](Subscription subscription) { m_subscriptions.push_back(std::move(subscription)); };
    const auto promptsChanged = [this](const auto&) { showPrompts(); };
    follow(storage.mainPrompt.subscribe(promptsChanged));
    follow(storage.aiPrompts.subscribe(promptsChanged));
    follow(storage.storedPromptID.subscribe(promptsChanged));
    follow(storage.showInStatusBar.subscribe([this](bool wanted) { m_icon.setWanted(wanted); }));
    follow(m_services.overlay.phase.subscribe([this](DictationPhase phase) { showPhase(phase); }));
    follow(m_lastText.isThere.subscribe([this](bool isThere) { m_state.hasLastText.set(isThere); }));
    showPrompts();
    m_lastText.start();
    m_icon.setWanted(storage.showInStatusBar.get());
}

TrayActions TrayHost::actions(std::function<void()> quit)
{
    return {
        .startOrStop = [this] { startOrStop(); },
        .choosePrompt = [this](const auto& id) { m_services.session.changePrompt(Uuid::parse(id)); },
        .chooseModel =
            [this](const auto& id) { m_services.storage.selectedDictationModelID.set(m_services.models.named(id)); },
        .repeatLastText = [this] { m_lastText.insertAgain(); },
        .openHistory = [this] { m_opening.start(open(m_services.paths.historyFolder)); },
        .openSettings = [this] { m_opening.start(open(m_services.paths.settingsFile)); },
        .quit = std::move(quit)};
}

void TrayHost::showPrompts()
{
    auto& storage = m_services.storage;
    const AIPrompt mainPrompt = storage.mainPrompt.get();
    TrayChoice prompts{{{mainPrompt.id.toString(), mainPrompt.name}}, mainPrompt.id.toString()};
    const auto selected = m_services.session.selectedPromptID();
    for (const auto& prompt : storage.aiPrompts.get()) {
        prompts.entries.push_back({prompt.id.toString(), prompt.name});
        if (selected == prompt.id)
            prompts.chosen = prompt.id.toString();
    }
    m_state.prompts.set(std::move(prompts));
}

void TrayHost::showModels(const std::vector<ModelRow>& models)
{
    TrayChoice choice;
    for (const auto& model : models) {
        if (!model.isReady)
            continue;
        choice.entries.push_back({model.id, model.name});
        if (model.isDefault)
            choice.chosen = model.id;
    }
    m_state.models.set(std::move(choice));
}

void TrayHost::showPhase(DictationPhase phase)
{
    switch (phase) {
    case DictationPhase::idle:
        m_state.phase.set(TrayPhase::idle);
        m_lastText.look();
        break;
    case DictationPhase::recording: m_state.phase.set(TrayPhase::recording); break;
    case DictationPhase::processing: m_state.phase.set(TrayPhase::processing); break;
    }
}

Task<void> TrayHost::shutDown()
{
    m_icon.setWanted(false); // nothing is to be begun from its menu any more
    m_subscriptions.clear();
    m_opening.requestStop();
    co_await m_opening.untilEmpty();
    co_await m_lastText.shutDown();
}

void TrayHost::startOrStop()
{
    const auto done = m_services.remote.carryOut({InstanceRequest::Action::toggle, {}});
    if (!done)
        m_services.notices.show(done.error());
}

Task<void> TrayHost::open(std::filesystem::path path)
{
    std::error_code ignored;
    std::filesystem::create_directories(path.has_extension() ? path.parent_path() : path, ignored);
    if (!std::filesystem::exists(path, ignored)) {
        m_services.notices.show("Nothing is there yet: " + path.string());
        co_return;
    }
    const std::string address = path.string();
    const auto opened = co_await m_services.appLauncher.openURL(address);
    if (!opened && opened.error().kind != AppLaunchError::Kind::cancelled)
        m_services.notices.show("Your desktop could not open " + address + ". " + userMessage(opened.error()));
}

} // namespace vocalith
