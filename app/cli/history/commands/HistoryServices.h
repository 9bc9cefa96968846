#pragma once

#include "app/cli/history/text/HistoryOutput.h"
#include "app/cli/recognition/RecognitionOptions.h"
#include "models/TranscriptionModelID.h"

#include <functional>

namespace vocalith {

class AudioPlayer;
class ClipboardWriter;
class Clock;
class HistoryEntryActionsService;
class HistoryService;
class InterruptSignals;
class PersistentAppStorage;

/// What the commands of the history work with. It outlives them.
struct HistoryServices {
    HistoryService& history;
    HistoryEntryActionsService& actions;
    PersistentAppStorage& appStorage;
    AudioPlayer& player;
    ClipboardWriter& clipboard;
    const Clock& clock;
    InterruptSignals& interrupts;
    /// The model that the options name, or else the one that is selected for dictation.
    std::function<TranscriptionModelID(const RecognitionOptions&)> chooseModel;
    HistoryOutput output;
};

} // namespace vocalith
