#include "core/speech/whisper/WhisperSettings.h"

#include "core/storage/settings/PersistentAppStorage.h"

namespace vocalith {

WhisperSettings readWhisperSettings(const PersistentAppStorage& storage)
{
    WhisperSettings settings;
    settings.whisperThreads = storage.whisperThreads.get();
    settings.whisperMaxSentenceLength = storage.whisperMaxSentenceLength.get();
    settings.whisperTranslateToEnglish = storage.whisperTranslateToEnglish.get();
    settings.whisperLanguage = parseWhisperLanguage(storage.whisperLanguage.get()).value_or(WhisperLanguage::automatic);
    settings.whisperTemperature = storage.whisperTemperature.get();
    settings.whisperPrompt = storage.whisperPrompt.get();
    settings.whisperFixRepetitions = storage.whisperFixRepetitions.get();
    return settings;
}

std::filesystem::path modelsFolder(const PersistentAppStorage& storage, const std::filesystem::path& usual)
{
    const auto& chosen = storage.customModelsFolderBookmark.get();
    return chosen && !chosen->empty() ? std::filesystem::path(std::string(chosen->begin(), chosen->end())) : usual;
}

} // namespace vocalith
