#pragma once

#include "base/JsonFields.h"

#include <optional>
#include <string>

namespace vocalith {

enum class ModelType { whisper, appleSpeech, none };

/// The user's choice of a model, as a record of the settings.
struct TranscriptionModelSelection {
    std::optional<std::string> modelId;
    ModelType modelType = ModelType::none;
    std::optional<std::string> locale; ///< for the platform's recognisers: "en_US"
    bool operator==(const TranscriptionModelSelection&) const = default;
};

constexpr auto jsonFields(JsonType<TranscriptionModelSelection>)
{
    return fields(field("modelId", &TranscriptionModelSelection::modelId),
                  field("modelType", &TranscriptionModelSelection::modelType),
                  field("locale", &TranscriptionModelSelection::locale));
}

} // namespace vocalith
