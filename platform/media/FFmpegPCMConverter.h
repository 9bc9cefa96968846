#pragma once

#include "ports/PCMConverter.h"

namespace vocalith {

/// Media conversion by the FFmpeg libraries. It holds no state, so one object, owned by the composition, serves all
/// callers on any thread. What a file is, is told by its content: its name plays no part, and a file that only names
/// others (a playlist) is no media file. Output files are readable by their owner only and appear when they are whole.
class FFmpegPCMConverter final : public PCMConverter {
public:
    /// Silences the libraries' own messages for the whole process.
    FFmpegPCMConverter();

    Result<MediaInfo, ConversionError> examine(const std::filesystem::path& file) const override;
    Result<std::int64_t, ConversionError> convert(const std::filesystem::path& file, const SampleSink& sink,
                                                  const ProgressHandler& progress,
                                                  const StopToken& stop) const override;
    Result<double, ConversionError> extractAudio(const std::filesystem::path& file,
                                                 const std::filesystem::path& wavFile, const ProgressHandler& progress,
                                                 const StopToken& stop) const override;
    Result<std::filesystem::path, ConversionError> compressForUpload(const std::filesystem::path& recording,
                                                                     AudioUploadCompression compression,
                                                                     const std::filesystem::path& folder,
                                                                     const StopToken& stop) const override;
};

} // namespace vocalith
