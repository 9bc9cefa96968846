#pragma once

#include "base/Uuid.h"
#include "core/output/TextOutput.h"
#include "models/TranscriptionData.h"

#include <filesystem>
#include <optional>
#include <string>
#include <variant>

namespace vocalith {

/// How a dictation ended.
namespace dictation_outcome {

struct Delivered {
    TranscriptionData transcription;
    std::string text;                             ///< as it stood after the last step
    std::optional<TextDestination> destination{}; ///< absent when no text was left to deliver
    bool operator==(const Delivered&) const = default;
};
/// A step ended the run on purpose; nothing was inserted.
struct EndedEarly {
    std::string reason{};   ///< a sentence for people
    bool isFailure = false; ///< what it ended for has failed; `reason` says so, and the user has been told
    bool operator==(const EndedEarly&) const = default;
};
struct TooShort {
    double elapsedTime = 0; ///< seconds
    bool operator==(const TooShort&) const = default;
};
struct Failed {
    std::string message;                              ///< shown to the user
    std::string detail{};                             ///< the cause and what to do, for people; may be empty
    std::optional<std::filesystem::path> recording{}; ///< where the audio was kept
    std::optional<Uuid> historyEntry{};               ///< the entry of the history that has what was kept
    bool historyHasText = false;                      ///< that entry has the words too
    std::string text{};                               ///< the words, when the failure came after recognition
    bool noSpeech = false;
    bool operator==(const Failed&) const = default;
};
struct Cancelled {
    bool operator==(const Cancelled&) const = default;
};

} // namespace dictation_outcome

using DictationOutcome =
    std::variant<dictation_outcome::Delivered, dictation_outcome::EndedEarly, dictation_outcome::TooShort,
                 dictation_outcome::Failed, dictation_outcome::Cancelled>;

} // namespace vocalith
