#pragma once

#include "base/Result.h"
#include "core/speech/catalogue/VoiceModelMetadata.h"

#include <optional>
#include <string>
#include <variant>

namespace vocalith {

enum class ParakeetModel { tdtV2, tdtV3 };
enum class Qwen3Model { full, int8 };
enum class PlatformRecogniser { speechTranscriber, speechAnalyzer };

struct LocalWhisperRoute {
    TranscriptionModelID model;
    std::string fileName; ///< in the models folder
    bool operator==(const LocalWhisperRoute&) const = default;
};

struct LocalParakeetRoute {
    ParakeetModel model = ParakeetModel::tdtV3;
    bool operator==(const LocalParakeetRoute&) const = default;
};

struct LocalParakeetEouRoute {
    bool operator==(const LocalParakeetEouRoute&) const = default;
};

struct LocalQwen3Route {
    Qwen3Model model = Qwen3Model::full;
    bool operator==(const LocalQwen3Route&) const = default;
};

/// The recording is uploaded when it is finished.
struct OnlineFileRoute {
    FileBasedWorkflow workflow = FileBasedWorkflow::vocalith;
    AudioUploadCompression compression = AudioUploadCompression::none;
    /// The own-key entry whose stored key the request carries; none when the vendor's backend serves it.
    std::optional<TranscriptionModelID> keyProvider;
    /// The provider's name of the model, where the catalogue entry decides it. Without one the name comes from the
    /// user's model field (`requestModelName`), or the vendor's backend knows the entry by its identity.
    std::optional<std::string> model;
    bool operator==(const OnlineFileRoute&) const = default;
};

/// The audio is streamed while the user speaks.
struct OnlineStreamingRoute {
    OnlineStreamingConfig config = OnlineStreamingConfig::soniox;
    std::optional<TranscriptionModelID> keyProvider; ///< as in `OnlineFileRoute`
    std::optional<std::string> model;                ///< as in `OnlineFileRoute`
    bool englishOnly = false;                        ///< the provider is told to expect English
    bool operator==(const OnlineStreamingRoute&) const = default;
};

struct PlatformRoute {
    PlatformRecogniser recogniser = PlatformRecogniser::speechTranscriber;
    bool operator==(const PlatformRoute&) const = default;
};

/// The engine that serves a model, and what it must know to do so.
using EngineRoute = std::variant<LocalWhisperRoute, LocalParakeetRoute, LocalParakeetEouRoute, LocalQwen3Route,
                                 OnlineFileRoute, OnlineStreamingRoute, PlatformRoute>;

/// What the route depends on besides the entry.
struct RouteOptions {
    /// For an entry with `byokSupport`: a key is stored for `keyProvider(option)`. It replaces the vendor's backend.
    bool ownKeyStored = false;
    /// For an own-key provider that offers both ways: stream. Not for files.
    bool streamingEnabled = false;
};

struct EngineRouteError {
    enum class Kind { unsupportedParakeetModel, unsupportedQwen3Model };
    Kind kind = Kind::unsupportedParakeetModel;
    std::string modelId;
    bool operator==(const EngineRouteError&) const = default;
};

/// The text that is shown to the user.
std::string userMessage(const EngineRouteError& error);

Result<EngineRoute, EngineRouteError> engineRoute(const VoiceModelMetadata& entry, const RouteOptions& options);

/// The own-key entry that keeps the key for an option.
TranscriptionModelID keyProvider(BYODictationAPIKeyOption option);

/// Which model of the runtime an identity means.
Result<ParakeetModel, EngineRouteError> parakeetModel(const TranscriptionModelID& model);
Result<Qwen3Model, EngineRouteError> qwen3Model(const TranscriptionModelID& model);

} // namespace vocalith
