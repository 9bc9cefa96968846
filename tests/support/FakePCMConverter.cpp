#include "tests/support/FakePCMConverter.h"

#include "base/Uuid.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>

namespace vocalith::test {

namespace fs = std::filesystem;

namespace {

constexpr int kRate = 16000;

void appendNumber(std::string& bytes, std::uint32_t value, int size)
{
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> (8 * i));
}

std::string wavBytes(std::span<const float> samples)
{
    const auto dataSize = static_cast<std::uint32_t>(samples.size() * 2);
    std::string bytes = "RIFF";
    appendNumber(bytes, 36 + dataSize, 4);
    bytes += "WAVEfmt ";
    appendNumber(bytes, 16, 4);
    appendNumber(bytes, 1, 2); // PCM
    appendNumber(bytes, 1, 2); // mono
    appendNumber(bytes, kRate, 4);
    appendNumber(bytes, kRate * 2, 4);
    appendNumber(bytes, 2, 2);
    appendNumber(bytes, 16, 2);
    bytes += "data";
    appendNumber(bytes, dataSize, 4);
    for (const float sample : samples)
        appendNumber(bytes, static_cast<std::uint32_t>(std::lround(std::clamp(sample, -1.0F, 1.0F) * 32767)), 2);
    return bytes;
}

} // namespace

std::vector<FakePCMConverter::Call> FakePCMConverter::calls() const
{
    const std::lock_guard lock(m_mutex);
    return m_calls;
}

void FakePCMConverter::record(Call call) const
{
    const std::lock_guard lock(m_mutex);
    m_calls.push_back(std::move(call));
}

const std::vector<float>& FakePCMConverter::samplesFor(const fs::path& file) const
{
    const auto found = samplesOf.find(file);
    return found == samplesOf.end() ? samples : found->second;
}

ConversionError FakePCMConverter::errorFor(const fs::path& file) const
{
    auto result = error.value_or(ConversionError{.kind = ConversionError::Kind::damaged});
    result.file = file;
    return result;
}

Result<MediaInfo, ConversionError> FakePCMConverter::examine(const fs::path& file) const
{
    record({Call::Kind::examine, file, {}});
    if (error && !failAfter)
        return failure(errorFor(file));
    return MediaInfo{
        .duration = static_cast<double>(samplesFor(file).size()) / kRate, .hasAudio = true, .hasVideo = hasVideo};
}

Result<std::int64_t, ConversionError> FakePCMConverter::play(const fs::path& file, const SampleSink& sink,
                                                             const ProgressHandler& progress,
                                                             const StopToken& stop) const
{
    if (error && !failAfter)
        return failure(errorFor(file));
    const std::span<const float> all(samplesFor(file));
    const auto end = std::min(all.size(), failAfter.value_or(all.size()));
    std::size_t position = 0;
    while (position < end) {
        if (stop.stop_requested())
            break;
        const auto size = std::min(pieceSize, end - position);
        const bool goOn = sink(all.subspan(position, size));
        position += size;
        if (!goOn)
            return static_cast<std::int64_t>(position);
        if (progress)
            progress(static_cast<double>(position) / static_cast<double>(all.size() + 1));
    }
    if (stop.stop_requested())
        return failure(ConversionError{.file = file, .cancelled = true});
    if (failAfter)
        return failure(errorFor(file));
    if (progress)
        progress(1);
    return static_cast<std::int64_t>(position);
}

Result<std::int64_t, ConversionError> FakePCMConverter::convert(const fs::path& file, const SampleSink& sink,
                                                                const ProgressHandler& progress,
                                                                const StopToken& stop) const
{
    record({Call::Kind::convert, file, {}});
    return play(file, sink, progress, stop);
}

Result<double, ConversionError> FakePCMConverter::extractAudio(const fs::path& file, const fs::path& wavFile,
                                                               const ProgressHandler& progress,
                                                               const StopToken& stop) const
{
    record({Call::Kind::extractAudio, file, wavFile});
    std::vector<float> played;
    const auto keep = [&played](std::span<const float> piece) {
        played.insert(played.end(), piece.begin(), piece.end());
        return true;
    };
    const auto count = play(file, keep, progress, stop);
    if (!count)
        return failure(count.error());
    writeFile(wavFile, wavBytes(played));
    return static_cast<double>(*count) / kRate;
}

Result<fs::path, ConversionError> FakePCMConverter::compressForUpload(const fs::path& recording,
                                                                      AudioUploadCompression compression,
                                                                      const fs::path& folder,
                                                                      const StopToken& stop) const
{
    const bool makesFile = compression == AudioUploadCompression::m4a;
    const auto output = makesFile ? folder / (Uuid::random().toString() + ".m4a") : fs::path();
    record({Call::Kind::compressForUpload, recording, output});
    if (stop.stop_requested())
        return failure(ConversionError{.file = recording, .cancelled = true});
    if (error)
        return failure(errorFor(recording));
    if (!makesFile)
        return recording;
    writeFile(output, compressed);
    return output;
}

} // namespace vocalith::test
