#pragma once

#include "base/Result.h"
#include "base/StopToken.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace vocalith {

/// One recognised word or phrase.
struct RecognizedSpan {
    std::string text;
    double start = 0; ///< seconds from the beginning of the audio
    double end = 0;
    bool operator==(const RecognizedSpan&) const = default;
};

struct SpeechRecognizerError {
    enum class Kind {
        modelMissing,        ///< the recogniser's own model is not installed; `detail` names what is missing
        languageUnsupported, ///< `detail` names the language
        failed,              ///< the recogniser gave up; `detail` says how
        cancelled
    };
    Kind kind = Kind::failed;
    std::string detail;
    bool operator==(const SpeechRecognizerError&) const = default;
};

/// The sentence that is shown to the user: what is wrong and what to do about it.
std::string userMessage(const SpeechRecognizerError& error);

/// A recogniser that belongs to the platform and needs no model of ours. Both calls block and belong on one worker
/// thread, one at a time.
class SpeechRecognizer {
public:
    virtual ~SpeechRecognizer() = default;

    /// Whether it can work here, or what is missing. Cheap, any thread.
    virtual Result<void, SpeechRecognizerError> availability() const = 0;
    /// Its name for people, e.g. with its language.
    virtual std::string displayName() const = 0;
    /// The languages that it knows, as ISO 639-1 codes.
    virtual std::vector<std::string> languages() const = 0;

    /// Loads what recognition needs, so that the first one starts at once. Harmless when done before.
    virtual Result<void, SpeechRecognizerError> prepare() = 0;
    /// Recognises 16 kHz mono samples in -1..1; the words come in time order. `language` is an ISO 639-1 code, or
    /// "auto" or empty for the recogniser's own. `progress` gets 0..1. No words is a success with an empty list.
    virtual Result<std::vector<RecognizedSpan>, SpeechRecognizerError>
    recognize(std::span<const float> samples, const std::string& language, const std::function<void(double)>& progress,
              const StopToken& stop) = 0;
    /// Gives back the memory that `prepare` took.
    virtual void release() = 0;
};

} // namespace vocalith
