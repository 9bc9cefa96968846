#pragma once

#include "ports/PCMConverter.h"

#include <map>
#include <mutex>
#include <optional>
#include <vector>

namespace vocalith::test {

/// A converter that plays what the test put into it and opens no file. Set it up before its first use; the calls may
/// then come from any thread.
class FakePCMConverter final : public PCMConverter {
public:
    /// The samples of any file that is not in `samplesOf`; one second of silence to begin with.
    std::vector<float> samples = std::vector<float>(16000);
    std::map<std::filesystem::path, std::vector<float>> samplesOf;
    /// When set, every call fails with it (its `file` becomes the call's file).
    std::optional<ConversionError> error;
    /// When set, `convert` and `extractAudio` fail with `error` (`damaged` without one) only after so many samples.
    std::optional<std::size_t> failAfter;
    bool hasVideo = false;
    /// The size of the pieces that the sink gets.
    std::size_t pieceSize = 16000;
    /// What compressForUpload writes into the new file.
    std::string compressed = "compressed audio";

    struct Call {
        enum class Kind { examine, convert, extractAudio, compressForUpload };
        Kind kind = Kind::examine;
        std::filesystem::path file;
        std::filesystem::path output; ///< of extractAudio and of a compressForUpload that made a new file
        bool operator==(const Call&) const = default;
    };
    std::vector<Call> calls() const;

    Result<MediaInfo, ConversionError> examine(const std::filesystem::path& file) const override;
    Result<std::int64_t, ConversionError> convert(const std::filesystem::path& file, const SampleSink& sink,
                                                  const ProgressHandler& progress,
                                                  const StopToken& stop) const override;
    /// Writes a real WAV file.
    Result<double, ConversionError> extractAudio(const std::filesystem::path& file,
                                                 const std::filesystem::path& wavFile, const ProgressHandler& progress,
                                                 const StopToken& stop) const override;
    Result<std::filesystem::path, ConversionError> compressForUpload(const std::filesystem::path& recording,
                                                                     AudioUploadCompression compression,
                                                                     const std::filesystem::path& folder,
                                                                     const StopToken& stop) const override;

private:
    void record(Call call) const;
    const std::vector<float>& samplesFor(const std::filesystem::path& file) const;
    ConversionError errorFor(const std::filesystem::path& file) const;
    Result<std::int64_t, ConversionError> play(const std::filesystem::path& file, const SampleSink& sink,
                                               const ProgressHandler& progress, const StopToken& stop) const;

    mutable std::mutex m_mutex;
    mutable std::vector<Call> m_calls;
};

} // namespace vocalith::test
