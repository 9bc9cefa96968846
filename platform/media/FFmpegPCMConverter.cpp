#include "platform/media/FFmpegPCMConverter.h"

#include "base/Uuid.h"
#include "platform/media/AudioTrackDecoder_p.h"
#include "platform/media/M4AWriter_p.h"
#include "platform/media/WavWriter_p.h"

namespace vocalith {

namespace fs = std::filesystem;
using namespace media;

namespace {

Failure<ConversionError> writeFailed(const fs::path& file, std::string reason)
{
    return failure(
        ConversionError{.kind = ConversionError::Kind::writeFailed, .file = file, .detail = std::move(reason)});
}

/// Decodes everything into `writer`, which makes `output`. Yields the number of samples.
template <class Writer>
Result<std::int64_t, ConversionError> writeAll(AudioTrackDecoder& decoder, Writer& writer, const fs::path& output,
                                               const PCMConverter::ProgressHandler& progress)
{
    const auto write = [&writer](std::span<const float> samples) { return writer.write(samples); };
    // The file is whole only after the last piece: until then the progress is held back.
    const auto partial = [&](double reached) {
        if (progress && reached < 1)
            progress(reached);
    };
    auto count = decoder.decode(write, partial);
    if (!count)
        return count;
    if (const auto finished = writer.finish(); !finished)
        return writeFailed(output, finished.error());
    if (progress)
        progress(1);
    return count;
}

} // namespace

FFmpegPCMConverter::FFmpegPCMConverter()
{
    av_log_set_level(AV_LOG_QUIET);
}

Result<MediaInfo, ConversionError> FFmpegPCMConverter::examine(const fs::path& file) const
{
    const auto source = MediaSource::open(file, {});
    if (!source)
        return failure(source.error());
    return (*source)->info();
}

Result<std::int64_t, ConversionError> FFmpegPCMConverter::convert(const fs::path& file, const SampleSink& sink,
                                                                  const ProgressHandler& progress,
                                                                  const StopToken& stop) const
{
    auto decoder = AudioTrackDecoder::open(file, stop);
    if (!decoder)
        return failure(decoder.error());
    return decoder->decode(sink, progress);
}

Result<double, ConversionError> FFmpegPCMConverter::extractAudio(const fs::path& file, const fs::path& wavFile,
                                                                 const ProgressHandler& progress,
                                                                 const StopToken& stop) const
{
    auto decoder = AudioTrackDecoder::open(file, stop);
    if (!decoder)
        return failure(decoder.error());
    auto output = OutputFile::create(wavFile);
    if (!output)
        return writeFailed(wavFile, output.error());
    WavWriter writer(std::move(*output));
    const auto count = writeAll(*decoder, writer, wavFile, progress);
    return count.map([](std::int64_t samples) { return static_cast<double>(samples) / kConvertedRate; });
}

Result<fs::path, ConversionError> FFmpegPCMConverter::compressForUpload(const fs::path& recording,
                                                                        AudioUploadCompression compression,
                                                                        const fs::path& folder,
                                                                        const StopToken& stop) const
{
    if (compression == AudioUploadCompression::none)
        return recording;
    auto decoder = AudioTrackDecoder::open(recording, stop);
    if (!decoder)
        return failure(decoder.error());
    auto m4aFile = folder / (Uuid::random().toString() + ".m4a");
    auto output = OutputFile::create(m4aFile);
    if (!output)
        return writeFailed(m4aFile, output.error());
    const auto writer = M4AWriter::open(std::move(*output));
    if (!writer)
        return writeFailed(m4aFile, writer.error());
    const auto count = writeAll(*decoder, **writer, m4aFile, {});
    if (!count)
        return failure(count.error());
    return m4aFile;
}

} // namespace vocalith
