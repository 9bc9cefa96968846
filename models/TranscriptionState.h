#pragma once

#include "base/JsonFields.h"

#include <optional>
#include <string>

namespace vocalith {

/// The live state of a running recognition, as engines report it.
struct TranscriptionState {
    enum class SpeechState { unknown, started, stopped };

    std::optional<std::string> final;     ///< text that the engine will no longer change
    std::optional<std::string> temporary; ///< the current hypothesis, which may still change
    bool isLoading = false;               ///< the engine is still preparing
    SpeechState speechState = SpeechState::unknown;

    bool operator==(const TranscriptionState&) const = default;
};

constexpr auto jsonFields(JsonType<TranscriptionState>)
{
    return fields(field("final", &TranscriptionState::final), field("temporary", &TranscriptionState::temporary),
                  field("isLoading", &TranscriptionState::isLoading),
                  field("speechState", &TranscriptionState::speechState));
}

} // namespace vocalith
