#pragma once

#include "app/desktop/hosts/LastText.h"
#include "app/overlay/OverlayManager.h"
#include "app/ui/TrayIcon.h"
#include "base/TaskScope.h"
#include "core/storage/AppPaths.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace vocalith {

class AppLauncher;
class HistoryService;
class ModelReport;
class Notices;
class PersistentAppStorage;
class RemoteControl;
class TextOutput;
struct ModelRow;

/// The tray's menu and what it does. Main thread.
class TrayHost {
public:
    struct Services {
        const AppPaths& paths;
        PersistentAppStorage& storage;
        HistoryService& history;
        const ModelReport& models;
        TranscriptionSessionManager& session;
        OverlayManager& overlay;
        RemoteControl& remote;
        TextOutput& output;
        AppLauncher& appLauncher;
        Notices& notices;
    };

    TrayHost(const Services& services, std::function<void()> quit);

    /// The icon comes now, where the user wants one. To be called once the history is there to be used.
    void start();
    /// The models that can be chosen are those of `models` that are ready.
    void showModels(const std::vector<ModelRow>& models);
    /// To be awaited before destruction.
    Task<void> shutDown();

private:
    TrayActions actions(std::function<void()> quit);
    void showPrompts();
    void showPhase(DictationPhase phase);
    void startOrStop();
    Task<void> open(std::filesystem::path path);

    const Services m_services;
    TrayState m_state;
    TrayIcon m_icon;
    LastText m_lastText;
    TaskScope m_opening;
    std::vector<Subscription> m_subscriptions;
};

} // namespace vocalith
