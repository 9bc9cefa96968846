#include "core/audio/RecordingRecovery.h"

#include "base/FileDescriptor.h"
#include "core/audio/RecordingsFolder.h"
#include "core/audio/WavFile.h"
#include "ports/AudioInput.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <vector>

namespace vocalith {

namespace {

namespace fs = std::filesystem;
using Failed = RecordingRecoveryFailure;

constexpr std::uint64_t kSampleSize = sizeof(std::int16_t);

/// The samples of an abandoned file: [begin, end) in bytes.
struct AudioRange {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

Failed kindOf(const WavError& error)
{
    return error.kind == WavError::Kind::diskFull ? Failed::diskFull : Failed::failed;
}

Result<FileDescriptor, Failed> openAbandoned(const fs::path& file)
{
    FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!fd.isOpen())
        return failure(errno == ENOENT || errno == ENOTDIR ? Failed::fileMissing : Failed::failed);
    struct ::stat status {};
    if (::fstat(fd.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return failure(Failed::fileMissing);
    if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return failure(Failed::stillRecording);
    return fd;
}

/// Goes by what is in the file, not by what its header says: the end came in the middle of something.
AudioRange audioOf(int fd, std::int64_t startByte)
{
    struct ::stat status {};
    const auto size = ::fstat(fd, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
    const auto header = readWavHeader(fd);
    const auto first = header ? header->dataOffset : kWavHeaderSize;
    auto begin = std::max(first, static_cast<std::uint64_t>(std::max<std::int64_t>(startByte, 0)));
    begin += (begin - first) % kSampleSize;
    if (begin >= size)
        return {};
    return {begin, size - (size - begin) % kSampleSize};
}

Result<void, Failed> copyAudio(int from, AudioRange audio, WavWriter& to)
{
    std::vector<std::int16_t> samples(1U << 19U);
    while (audio.begin < audio.end) {
        const auto wanted = std::min<std::uint64_t>(samples.size() * kSampleSize, audio.end - audio.begin);
        const auto count = ::pread(from, samples.data(), wanted, static_cast<::off_t>(audio.begin));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < static_cast<::ssize_t>(kSampleSize))
            return failure(Failed::failed);
        const auto whole = static_cast<std::size_t>(count) / kSampleSize;
        if (const auto appended = to.append(std::span(samples).first(whole)); !appended)
            return failure(kindOf(appended.error()));
        audio.begin += whole * kSampleSize;
    }
    if (const auto flushed = to.flushToDisk(); !flushed)
        return failure(kindOf(flushed.error()));
    return {};
}

/// Writes aside and renames, so that a file of that name is always whole.
Result<void, Failed> writeRecovered(int from, AudioRange audio, const fs::path& file)
{
    if (!makeRecordingsFolder(file.parent_path()))
        return failure(Failed::failed);
    auto aside = file;
    aside += ".part";
    std::error_code ignored;
    fs::remove(aside, ignored); // of a recovery that did not come to its end
    auto writer = WavWriter::create(aside);
    if (!writer)
        return failure(kindOf(writer.error()));
    if (auto copied = copyAudio(from, audio, *writer); !copied) {
        fs::remove(aside, ignored);
        return copied;
    }
    if (::rename(aside.c_str(), file.c_str()) != 0)
        return failure(Failed::failed);
    const FileDescriptor folder(::open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen() || ::fsync(folder.get()) != 0)
        return failure(Failed::failed);
    return {};
}

/// What an earlier recovery has saved, when the program ended before anybody was told of it.
std::optional<RecoveredFile> savedEarlier(const Uuid& id, const fs::path& file)
{
    const auto header = readWavHeader(file);
    if (!header || header->dataBytes == 0)
        return std::nullopt;
    return RecoveredFile{id, file, header->duration(), header->dataOffset + header->dataBytes};
}

} // namespace

std::optional<Uuid> recordingID(const fs::path& file)
{
    constexpr std::size_t kIdLength = 36;
    const auto stem = file.stem().string();
    return stem.size() < kIdLength ? std::nullopt : Uuid::parse(stem.substr(stem.size() - kIdLength));
}

std::string userMessage(RecordingRecoveryFailure failure)
{
    switch (failure) {
    case Failed::stillRecording: return "This recording is still in progress.";
    case Failed::fileMissing: return "Audio file does not exist.";
    case Failed::empty: return "Empty audio file.";
    case Failed::diskFull: return "The disk is full. The interrupted recording is kept and will be recovered later.";
    case Failed::failed: return "The interrupted recording could not be recovered. Its file is kept.";
    case Failed::cancelled: return "The recovery was cancelled.";
    }
    return {};
}

Result<RecoveredFile, RecordingRecoveryFailure> recoverRecording(const AudioCrashRecoveryInfo& info,
                                                                 const fs::path& folder, const Logger& logger)
{
    const fs::path abandoned(info.recordingFilePath);
    const auto fail = [&](Failed why) {
        logger.warning(fmt::format("Cannot recover recording {}: {}", abandoned.string(), userMessage(why)));
        return failure(why);
    };
    const auto id = recordingID(abandoned).value_or(Uuid::random());
    auto path = folder / ("VocalithRecovered-" + id.toString() + ".wav");
    const auto fd = openAbandoned(abandoned);
    if (!fd && fd.error() == Failed::fileMissing) {
        if (auto saved = savedEarlier(id, path))
            return *std::move(saved);
    }
    if (!fd)
        return fail(fd.error());
    const auto audio = audioOf(fd->get(), info.startByte);
    std::error_code ignored;
    if (audio.begin == audio.end) {
        fs::remove(abandoned, ignored);
        return fail(Failed::empty);
    }
    if (const auto written = writeRecovered(fd->get(), audio, path); !written)
        return fail(written.error());
    fs::remove(abandoned, ignored);

    const auto pcm = audio.end - audio.begin;
    RecoveredFile recovered{id, std::move(path), static_cast<double>(pcm) / kSampleSize / kAudioSampleRate,
                            pcm + kWavHeaderSize};
    logger.info(fmt::format("Recovered recording {}, size: {}, duration: {:.3f}, pcm={}", recovered.path.string(),
                            recovered.size, recovered.duration, pcm));
    return recovered;
}

} // namespace vocalith
