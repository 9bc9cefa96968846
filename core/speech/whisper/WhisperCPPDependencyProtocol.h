#pragma once

#include "base/Result.h"
#include "core/speech/TranscriptionService.h"
#include "core/speech/whisper/WhisperSettings.h"
#include "models/TranscriptionSource.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vocalith {

/// What one decode yields: the trimmed segment texts joined with one space, and the segments, whose times are seconds
/// from the beginning of the samples.
struct WhisperTranscript {
    std::string text;
    std::vector<TranscriptionData::Segment> segments;
};

/// What the whisper service needs of the library: one loaded model that decodes one buffer after the other. The calls
/// block and belong on the service's worker thread, but for `cancel`.
class WhisperCPPDependencyProtocol {
public:
    using ProgressHandler = std::function<void(int percent)>; ///< 0..100, on the thread of `transcribe`

    virtual ~WhisperCPPDependencyProtocol() = default;

    /// Decodes 16 kHz mono samples in -1..1. No text is a success with no segments.
    virtual Result<WhisperTranscript, TranscriptionError> transcribe(std::span<const float> samples,
                                                                     const ProgressHandler& progress) = 0;

    /// Ends the decode that runs; it then yields `cancelled`, and the model can decode again. Any thread, at once; the
    /// library itself looks only between its steps.
    virtual void cancel() = 0;

    /// Gives the model's memory back; a decode after that fails with `contextMissing`. The destructor does it too.
    virtual void release() = 0;
};

/// Makes the wrapper of the library: what is put in its place is named once, in the composition.
class WhisperCPPFactory {
public:
    virtual ~WhisperCPPFactory() = default;

    /// Loads a model file, which was verified before. Blocks.
    virtual Result<std::unique_ptr<WhisperCPPDependencyProtocol>, TranscriptionError>
    create(const std::filesystem::path& modelFile, bool useGpu, const TranscriptionModelID& modelId,
           TranscriptionSource source, const WhisperSettings& settings) = 0;
};

} // namespace vocalith
