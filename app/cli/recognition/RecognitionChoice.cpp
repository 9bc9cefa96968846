#include "app/cli/recognition/RecognitionChoice.h"

#include "app/cli/models/ModelReport.h"
#include "base/Json.h"
#include "core/speech/whisper/ModelFileManager.h"

namespace vocalith {

TranscriptionModelID chooseModel(const RecognitionOptions& options, TranscriptionSource source,
                                 const ModelReport& models, ModelFileManager& modelFiles)
{
    if (!options.model)
        return models.defaultModel(source);
    const std::filesystem::path path(*options.model);
    if (!path.has_parent_path())
        return models.named(*options.model);
    modelFiles.setModelsFolder(std::filesystem::absolute(path).parent_path());
    return models.named(path.filename().string());
}

DictationConfiguration dictationConfiguration(const DictateOptions& options, TranscriptionModelID model)
{
    DictationConfiguration configuration;
    configuration.shortcuts = {{Uuid::random(), {0, VoiceJournal{}}}};
    configuration.defaultModel = std::move(model);
    configuration.recordingMode = options.source;
    configuration.microphoneId = options.microphone;
    return configuration;
}

RecognitionOptions recognitionOptions(const Command& command)
{
    if (const auto* dictate = std::get_if<DictateOptions>(&command))
        return dictate->recognition;
    if (const auto* transcribe = std::get_if<TranscribeOptions>(&command))
        return transcribe->recognition;
    const auto* history = std::get_if<HistoryOptions>(&command);
    if (const auto* retry = history ? std::get_if<HistoryRetryOptions>(history) : nullptr)
        return retry->recognition;
    return {};
}

std::string printedDictation(const DictateOptions& options, const std::string& text, const TranscriptionModelID& model)
{
    if (!options.json)
        return text;
    const Json object = {{"text", text}, {"model", toString(model)}};
    return dumpJson(object, -1);
}

std::string explained(const TranscriptionError& error)
{
    std::string text = userMessage(error);
    if (error.kind == TranscriptionError::Kind::modelNotFound)
        text += "\n\"vocalith models list\" shows which there are, \"vocalith doctor\" how to get one.";
    return text;
}

} // namespace vocalith
