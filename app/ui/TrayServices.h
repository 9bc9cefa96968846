#pragma once

#include "base/Observable.h"

#include <functional>
#include <string>
#include <vector>

namespace vocalith {

enum class TrayPhase { idle, recording, processing };

/// A list of which one entry holds.
struct TrayChoice {
    struct Entry {
        std::string id;
        std::string title;
        bool operator==(const Entry&) const = default;
    };
    std::vector<Entry> entries;
    std::string chosen; ///< an id; may be none of them
    bool operator==(const TrayChoice&) const = default;
};

/// What the tray shows of the program.
struct TrayState {
    Observable<TrayPhase> phase;
    Observable<TrayChoice> prompts;
    Observable<TrayChoice> models;
    Observable<bool> hasLastText;
};

/// What the tray's menu does. Each is called on the main thread, from the event loop.
struct TrayActions {
    std::function<void()> startOrStop;
    std::function<void(const std::string& id)> choosePrompt;
    std::function<void(const std::string& id)> chooseModel;
    std::function<void()> repeatLastText; ///< inserts or copies it once more
    std::function<void()> openHistory;
    std::function<void()> openSettings;
    std::function<void()> quit;
};

} // namespace vocalith
