#pragma once

#include "core/speech/catalogue/VoiceModelWorkflow.h"
#include "models/AIProviderType.h"
#include "models/TranscriptionModelID.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vocalith {

/// The filter chips of the model picker, in their order there.
enum class VoiceModelCategory {
    all,
    onlineModels,
    localModels,
    api,
    mostFast,
    mostAccurate,
    punctuationSupport,
    captionSupport
};

/// A chip on the card of a model.
struct VoiceModelAttribute {
    std::string icon; ///< the symbol's name
    std::string label;
    bool operator==(const VoiceModelAttribute&) const = default;
};

/// The bars on the card of a model: 1 (least) to 10.
struct ModelMetrics {
    int accuracy = 0;
    int speed = 0;
    bool operator==(const ModelMetrics&) const = default;
};

/// One thing that the user can set for a model of its own, beside key and model name.
enum class VoiceModelSetting {
    transcriptionPrompt, ///< a text that steers the recognition
    language,            ///< the language that is spoken, pinned
    languageDetection,
    streaming,           ///< stream while speaking, instead of uploading afterwards
    region,              ///< a `SonioxRegion`
    secondaryCredential, ///< a second secret beside the key
    resourceId
};

/// What the settings sheet of a model offers.
struct VoiceModelSettings {
    std::vector<VoiceModelSetting> offered;
    bool operator==(const VoiceModelSettings&) const = default;
};

/// A model that the vendor's backend or a provider serves. Descriptions are Markdown throughout.
struct OnlineTranscriptionModelMetadata {
    TranscriptionModelID id;
    std::string name;
    std::string description;
    std::optional<BYODictationAPIKeyOption> byokSupport; ///< how an own key may replace the vendor's backend
    std::optional<std::string> recommendationBadge;
    std::vector<VoiceModelAttribute> attributes;
    VoiceModelWorkflow workflow;
    std::vector<VoiceModelCategory> categories;
    std::optional<ModelMetrics> metrics;
    AIProviderType providerType{};
    std::optional<VoiceModelSettings> settings;
    bool operator==(const OnlineTranscriptionModelMetadata&) const = default;
};

/// A model that runs on this machine.
struct LocalTranscriptionModelMetadata {
    /// A whisper.cpp model file.
    struct Downloadable {
        std::optional<std::string> downloadUrl;
        std::optional<std::string> coreMlDownloadUrl; ///< a zipped encoder
        bool operator==(const Downloadable&) const = default;
    };
    struct ParakeetDownloadable {
        bool operator==(const ParakeetDownloadable&) const = default;
    };
    /// The streaming model that notices the end of an utterance.
    struct ParakeetEouDownloadable {
        bool operator==(const ParakeetEouDownloadable&) const = default;
    };
    struct Qwen3Downloadable {
        bool operator==(const Qwen3Downloadable&) const = default;
    };
    /// A whisper.cpp model file that the user placed in the models folder.
    struct Local {
        bool operator==(const Local&) const = default;
    };
    using ModelSource =
        std::variant<Downloadable, ParakeetDownloadable, ParakeetEouDownloadable, Qwen3Downloadable, Local>;

    TranscriptionModelID id;
    std::string name;
    ModelSource source;
    std::string description;
    std::optional<std::string> recommendationBadge;
    std::vector<VoiceModelAttribute> attributes;
    std::vector<VoiceModelCategory> categories;
    std::optional<ModelMetrics> metrics;
    AIProviderType providerType{};
    std::uint64_t sizeInBytes = 0; ///< of the download, as the size chip rounds it: not for checking a file
    bool operator==(const LocalTranscriptionModelMetadata&) const = default;
};

/// A recogniser of the platform.
struct AppleTranscriptionModelMetadata {
    TranscriptionModelID id;
    std::string title;
    std::string description;
    std::vector<VoiceModelAttribute> attributes;
    std::vector<VoiceModelCategory> categories;
    std::optional<ModelMetrics> metrics;
    AIProviderType providerType{};
    bool operator==(const AppleTranscriptionModelMetadata&) const = default;
};

/// A provider that the user configures with a personal key.
struct BYOKVoiceModelMetadata {
    /// The provider's API: scheme and host, and what comes before the paths of the requests.
    struct Hardcoded {
        std::string url;
        bool operator==(const Hardcoded&) const = default;
    };
    /// The user may edit the URL; the placeholder is shown in the empty field.
    struct Customizable {
        std::string defaultUrl;
        std::string placeholder;
        bool operator==(const Customizable&) const = default;
    };
    using BaseURL = std::variant<Hardcoded, Customizable>;

    TranscriptionModelID id;
    std::string name;
    std::string description;
    std::optional<std::string> recommendationBadge;
    bool requiresAPIKey = true;
    std::string modelPlaceholder; ///< proposed in the model field
    BaseURL baseURL;
    std::vector<VoiceModelAttribute> attributes;
    std::vector<VoiceModelWorkflow> workflows; ///< never empty; at most one of each kind, the upload first
    AIProviderType providerType{};
    std::optional<VoiceModelSettings> settings;
    std::vector<VoiceModelCategory> categories;
    bool operator==(const BYOKVoiceModelMetadata&) const = default;
};

/// One entry of the catalogue.
using VoiceModelMetadata = std::variant<OnlineTranscriptionModelMetadata, LocalTranscriptionModelMetadata,
                                        AppleTranscriptionModelMetadata, BYOKVoiceModelMetadata>;

enum class VoiceModelFamily { online, local, apple, byok };

VoiceModelFamily family(const VoiceModelMetadata& entry);
const TranscriptionModelID& id(const VoiceModelMetadata& entry);
const std::string& name(const VoiceModelMetadata& entry);
const std::string& description(const VoiceModelMetadata& entry);
const std::vector<VoiceModelAttribute>& attributes(const VoiceModelMetadata& entry);
const std::vector<VoiceModelCategory>& categories(const VoiceModelMetadata& entry);
std::optional<std::string> recommendationBadge(const VoiceModelMetadata& entry);
std::optional<ModelMetrics> metrics(const VoiceModelMetadata& entry);
AIProviderType providerType(const VoiceModelMetadata& entry);

/// Whether the model knows no other language: it must not be asked to find the language out.
bool isEnglishOnly(const VoiceModelMetadata& entry);
/// Whether the entry is a whisper.cpp model file, from the hub or the user's own.
bool isWhisperModel(const VoiceModelMetadata& entry);

/// The name of the model's file in the models folder (of the runtime's package for the models that are no whisper
/// files); nothing for a model that does not run here. No two entries share one: where the hub calls a file the same as
/// another repository might, the file gets a name of its own here.
std::optional<std::string> modelFileName(const VoiceModelMetadata& entry);

} // namespace vocalith
