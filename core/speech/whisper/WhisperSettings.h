#pragma once

#include "models/WhisperLanguage.h"

#include <filesystem>
#include <string>

namespace vocalith {

class PersistentAppStorage;

/// How a whisper model decodes: the user's seven settings.
struct WhisperSettings {
    int whisperThreads = 1;           ///< 0 or less lets the wrapper choose
    int whisperMaxSentenceLength = 0; ///< of a segment, in characters; 0 or less means no limit
    bool whisperTranslateToEnglish = false;
    WhisperLanguage whisperLanguage = WhisperLanguage::automatic;
    float whisperTemperature = 0;
    std::string whisperPrompt;          ///< empty means none
    bool whisperFixRepetitions = false; ///< drops the context of past text, the prompt included

    bool operator==(const WhisperSettings&) const = default;
};

/// The settings as they stand. A stored language that the models do not know counts as automatic.
WhisperSettings readWhisperSettings(const PersistentAppStorage& storage);

/// The folder that holds the models: the one that the user chose, or `usual`.
std::filesystem::path modelsFolder(const PersistentAppStorage& storage, const std::filesystem::path& usual);

} // namespace vocalith
