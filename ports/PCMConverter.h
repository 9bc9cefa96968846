#pragma once

#include "base/Result.h"
#include "base/StopToken.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>

namespace vocalith {

struct ConversionError {
    enum class Kind {
        notFound,
        notAFile, ///< a directory, a device, a socket
        unreadable,
        empty,
        notMedia,   ///< no known audio or video format; also a playlist, which only names other files
        noAudio,    ///< a media file without an audio track
        damaged,    ///< nothing of the audio could be decoded
        writeFailed ///< the output could not be written; `detail` holds the system's reason
    };
    Kind kind = Kind::notMedia;
    std::filesystem::path file{};
    std::string detail{};   ///< for the log
    bool cancelled = false; ///< the call was stopped: then the kind says nothing
    bool operator==(const ConversionError&) const = default;
};

/// The sentence that is shown to the user: names the file and says what to do.
std::string userMessage(const ConversionError& error);

/// How a recording is compressed before it is uploaded.
enum class AudioUploadCompression { none, m4a };

struct MediaInfo {
    double duration = 0; ///< seconds; 0 when the container does not say
    bool hasAudio = false;
    bool hasVideo = false; ///< a moving picture; cover art does not count
    bool operator==(const MediaInfo&) const = default;
};

/// Turns any audio or video file into the form that recognisers take (16 kHz, mono), and recordings into the form that
/// is uploaded. The calls block: they belong on a worker thread, and several may run at a time. Memory is bounded
/// whatever the file's length. A stop ends a call soon with `cancelled` set in the error; an unfinished output file is
/// removed. Only the named file is read, whatever its content refers to.
class PCMConverter {
public:
    /// Gets the next samples, 16 kHz mono in -1..1, in pieces of at most a second; returning false ends the conversion
    /// early, as a success. Called on the thread of the call.
    using SampleSink = std::function<bool(std::span<const float> samples)>;
    /// Gets the progress in 0..1, rising; 1 comes last, when all was converted. May be empty. Called on the thread of
    /// the call.
    using ProgressHandler = std::function<void(double progress)>;

    virtual ~PCMConverter() = default;

    /// Says what the file holds without decoding it. A media file without audio is no error here.
    virtual Result<MediaInfo, ConversionError> examine(const std::filesystem::path& file) const = 0;

    /// Decodes the first audio track into `sink`. A damaged passage is skipped, a truncated file gives what it holds,
    /// and a gap in the file's timeline becomes silence, so that times stay true. Yields the number of samples.
    virtual Result<std::int64_t, ConversionError> convert(const std::filesystem::path& file, const SampleSink& sink,
                                                          const ProgressHandler& progress,
                                                          const StopToken& stop) const = 0;

    /// Writes the first audio track of an audio or video file as a 16 kHz mono 16-bit WAV file, which replaces what is
    /// there once it is whole (`wavFile` may be `file`). A sound of more than 37 hours fits in no such file and is
    /// `writeFailed`. Yields its duration in seconds.
    virtual Result<double, ConversionError> extractAudio(const std::filesystem::path& file,
                                                         const std::filesystem::path& wavFile,
                                                         const ProgressHandler& progress,
                                                         const StopToken& stop) const = 0;

    /// Makes the file that is uploaded in place of `recording`: with `none` the recording itself, with `m4a` a new
    /// AAC file in `folder`, which the caller removes. Yields the file to upload.
    virtual Result<std::filesystem::path, ConversionError> compressForUpload(const std::filesystem::path& recording,
                                                                             AudioUploadCompression compression,
                                                                             const std::filesystem::path& folder,
                                                                             const StopToken& stop) const = 0;
};

} // namespace vocalith
