#pragma once

#include "base/Observable.h"
#include "base/Result.h"
#include "base/Task.h"
#include "models/TranscriptionData.h"
#include "models/TranscriptionState.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace vocalith {

/// Why a recognition failed.
struct TranscriptionError {
    enum class Kind {
        modelNotFound, ///< "Model not found: " + id
        modelDamaged,  ///< the model file is not what it claims to be; `detail` says where it is and how to mend it
        initializationFailed, ///< the library could not load the model; `detail` is its path
        contextMissing,       ///< a decode without a loaded context
        audioConversion,      ///< the recording could not be converted; `detail` says why, for people
        decodeFailed,         ///< `detail` is the library's code or reason
        noSpeech,             ///< the text came back empty
        languageUnknown,      ///< `detail` is the language that was asked for
        failed,               ///< the engine gave up; `detail` is the whole sentence that is shown
        unavailable,          ///< the model cannot be used here; `detail` is the whole sentence that is shown
        cancelled
    };
    Kind kind = Kind::decodeFailed;
    std::string detail;

    bool operator==(const TranscriptionError&) const = default;
};

/// The text that is shown to the user.
std::string userMessage(const TranscriptionError& error);

/// What the user asks of one recognition beside the settings.
struct TranscriptionOptions {
    std::optional<std::string> language; ///< a code or an English name, instead of the language in the settings

    bool operator==(const TranscriptionOptions&) const = default;
};

/// The engine of one dictation or one file: turns a recording into a transcript. Made by `TranscriptionServiceProvider`
/// for one voice model, owned by whoever asked for it, used on the main thread; the slow work runs on worker threads.
/// Every task ends soon with `cancelled` when it is asked to stop, whatever the library underneath still does.
class TranscriptionService {
public:
    using ProgressHandler = std::function<void(double progress)>; ///< 0..1, main thread

    virtual ~TranscriptionService() = default;

    virtual TranscriptionModelID modelId() const = 0;

    /// Prepares the engine (loads the model, connects) while the user already speaks. `transcribe` works without it,
    /// only later. What is loaded stays warm for the next dictation.
    virtual Task<Result<void, TranscriptionError>> start() = 0;

    /// Recognises a finished recording: any audio or video file. An empty text is the error `noSpeech`. Segment texts
    /// are trimmed, times lie within the recording.
    virtual Task<Result<TranscriptionData, TranscriptionError>> transcribe(std::filesystem::path recording,
                                                                           ProgressHandler progress) = 0;

    /// What the overlay shows while the engine works.
    Signal<TranscriptionState>& textEvents() { return m_textEvents; }

protected:
    void announceLoading(bool isLoading);
    void announceFinal(const TranscriptionData& transcript);

private:
    Signal<TranscriptionState> m_textEvents;
};

} // namespace vocalith
