#include "core/speech/catalogue/EngineRoute.h"

#include "core/speech/catalogue/VoiceModelCatalogue.h"

#include <algorithm>

namespace vocalith {

namespace {

using Local = LocalTranscriptionModelMetadata;
using Routed = Result<EngineRoute, EngineRouteError>;

Routed localRoute(const Local& model, const VoiceModelMetadata& entry)
{
    if (std::holds_alternative<Local::ParakeetDownloadable>(model.source))
        return parakeetModel(model.id).map([](auto parakeet) { return EngineRoute(LocalParakeetRoute{parakeet}); });
    if (std::holds_alternative<Local::ParakeetEouDownloadable>(model.source)) {
        if (model.id != TranscriptionModelID(PredefinedModelID::parakeetEou))
            return failure(EngineRouteError{EngineRouteError::Kind::unsupportedParakeetModel, toString(model.id)});
        return LocalParakeetEouRoute{};
    }
    if (std::holds_alternative<Local::Qwen3Downloadable>(model.source))
        return qwen3Model(model.id).map([](auto qwen3) { return EngineRoute(LocalQwen3Route{qwen3}); });
    return LocalWhisperRoute{model.id, modelFileName(entry).value_or("")};
}

EngineRoute upload(FileBasedWorkflow workflow, BYODictationAPIKeyOption option, const char* model)
{
    // All providers that own-key options lead to take compressed recordings.
    return OnlineFileRoute{workflow, AudioUploadCompression::m4a, keyProvider(option), model};
}

/// The way straight to the provider, with the user's key.
EngineRoute ownKeyRoute(const OnlineTranscriptionModelMetadata& model, BYODictationAPIKeyOption option,
                        const VoiceModelMetadata& entry)
{
    using Option = BYODictationAPIKeyOption;
    const bool streams = std::holds_alternative<Streaming>(model.workflow);
    switch (option) {
    case Option::soniox:
        if (streams)
            return OnlineStreamingRoute{OnlineStreamingConfig::soniox, keyProvider(option), "stt-rt-preview", false};
        return upload(FileBasedWorkflow::soniox, option, "stt-async-preview");
    case Option::gpt4oTranscribe: return upload(FileBasedWorkflow::openAI, option, "gpt-4o-transcribe");
    case Option::gpt4oMiniTranscribe: return upload(FileBasedWorkflow::openAI, option, "gpt-4o-mini-transcribe");
    case Option::whisperV3Large: return upload(FileBasedWorkflow::groq, option, "whisper-large-v3");
    case Option::whisperV3Turbo: return upload(FileBasedWorkflow::groq, option, "whisper-large-v3-turbo");
    case Option::nova3:
        return OnlineStreamingRoute{OnlineStreamingConfig::deepgram, keyProvider(option), "nova-3",
                                    isEnglishOnly(entry)};
    }
    return {};
}

EngineRoute onlineRoute(const VoiceModelWorkflow& workflow, const std::optional<TranscriptionModelID>& provider,
                        bool englishOnly)
{
    if (const auto* file = std::get_if<FileBased>(&workflow))
        return OnlineFileRoute{file->workflow, file->compression, provider, std::nullopt};
    return OnlineStreamingRoute{std::get<Streaming>(workflow).config, provider, std::nullopt, englishOnly};
}

/// The workflow that the user wants, or the one there is.
const VoiceModelWorkflow& chosenWorkflow(const BYOKVoiceModelMetadata& provider, bool streaming)
{
    const auto wanted = std::ranges::find_if(provider.workflows, [streaming](const auto& workflow) {
        return std::holds_alternative<Streaming>(workflow) == streaming;
    });
    return wanted == provider.workflows.end() ? provider.workflows.front() : *wanted;
}

PlatformRoute platformRoute(const AppleTranscriptionModelMetadata& model)
{
    const bool analyzer = model.id == TranscriptionModelID(kSpeechAnalyzerID);
    return {analyzer ? PlatformRecogniser::speechAnalyzer : PlatformRecogniser::speechTranscriber};
}

} // namespace

std::string userMessage(const EngineRouteError& error)
{
    switch (error.kind) {
    case EngineRouteError::Kind::unsupportedParakeetModel: return "Unsupported Parakeet model: " + error.modelId;
    case EngineRouteError::Kind::unsupportedQwen3Model: return "Unsupported Qwen3 model: " + error.modelId;
    }
    return {};
}

Result<EngineRoute, EngineRouteError> engineRoute(const VoiceModelMetadata& entry, const RouteOptions& options)
{
    if (const auto* local = std::get_if<Local>(&entry))
        return localRoute(*local, entry);
    if (const auto* provider = std::get_if<BYOKVoiceModelMetadata>(&entry))
        return onlineRoute(chosenWorkflow(*provider, options.streamingEnabled), provider->id, isEnglishOnly(entry));
    if (const auto* platform = std::get_if<AppleTranscriptionModelMetadata>(&entry))
        return platformRoute(*platform);
    const auto& online = std::get<OnlineTranscriptionModelMetadata>(entry);
    if (online.byokSupport && options.ownKeyStored)
        return ownKeyRoute(online, *online.byokSupport, entry);
    return onlineRoute(online.workflow, std::nullopt, isEnglishOnly(entry));
}

TranscriptionModelID keyProvider(BYODictationAPIKeyOption option)
{
    using Option = BYODictationAPIKeyOption;
    switch (option) {
    case Option::soniox: return PredefinedModelID::sonioxAPI;
    case Option::gpt4oTranscribe:
    case Option::gpt4oMiniTranscribe: return PredefinedModelID::openAI;
    case Option::whisperV3Large:
    case Option::whisperV3Turbo: return PredefinedModelID::groq;
    case Option::nova3: return PredefinedModelID::deepgram;
    }
    return {};
}

Result<ParakeetModel, EngineRouteError> parakeetModel(const TranscriptionModelID& model)
{
    if (model == TranscriptionModelID(PredefinedModelID::parakeetTDT06))
        return ParakeetModel::tdtV3;
    if (model == TranscriptionModelID(PredefinedModelID::parakeetTDT06V2))
        return ParakeetModel::tdtV2;
    return failure(EngineRouteError{EngineRouteError::Kind::unsupportedParakeetModel, toString(model)});
}

Result<Qwen3Model, EngineRouteError> qwen3Model(const TranscriptionModelID& model)
{
    if (model == TranscriptionModelID(PredefinedModelID::qwen3ASR))
        return Qwen3Model::full;
    if (model == TranscriptionModelID(PredefinedModelID::qwen3ASRInt8))
        return Qwen3Model::int8;
    return failure(EngineRouteError{EngineRouteError::Kind::unsupportedQwen3Model, toString(model)});
}

} // namespace vocalith
