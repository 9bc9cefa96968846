#pragma once

#include "base/StopToken.h"
#include "core/speech/TranscriptionService.h"
#include "models/TranscriptionSource.h"

#include <filesystem>
#include <functional>
#include <span>

namespace vocalith {

class Logger;
class PCMConverter;

/// Recognises one stretch of the recording that begins `start` seconds into it. `progress` takes 0..1 of this stretch.
using PieceRecognition = std::function<Result<void, TranscriptionError>(std::span<const float> samples, double start,
                                                                        const std::function<void(double)>& progress)>;

/// Converts a recording to samples and has them recognised: a dictation as a whole, since it was held in memory anyway,
/// a file in pieces of at most ten minutes, cut where it is quiet, so that memory is bounded whatever the file's
/// length. Blocks; belongs on a worker thread. The progress of the whole, 0..1, never falls.
Result<void, TranscriptionError> recognizeInPieces(const PCMConverter& converter,
                                                   const std::filesystem::path& recording, TranscriptionSource source,
                                                   const PieceRecognition& recognize,
                                                   const std::function<void(double)>& progress, const Logger& logger,
                                                   const StopToken& stop);

} // namespace vocalith
