#include "core/audio/AudioRecordingManager.h"

#include "base/MainThread.h"
#include "core/audio/RecordingSink.h"
#include "core/audio/RecordingsFolder.h"
#include "core/audio/WavFile.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <fmt/format.h>

#include <system_error>
#include <utility>

namespace vocalith {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using Kind = AudioRecordingFailure::Kind;

namespace {

constexpr Duration kMeteringInterval = 30ms;
constexpr Duration kRecordingInterval = 1s;
constexpr double kBytesPerSecond = kAudioSampleRate * sizeof(std::int16_t);

/// The microphone first: it is there at once, and the other source's opening costs none of it.
std::vector<AudioInputRequest> sourcesOf(const RecordingRequest& request)
{
    std::vector<AudioInputRequest> sources;
    if (request.mode != RecordingMode::systemAudio)
        sources.push_back({AudioSource::microphone, request.deviceId});
    if (request.mode != RecordingMode::microphone)
        sources.push_back({AudioSource::systemAudio, {}});
    return sources;
}

Failure<AudioRecordingFailure> failed(Kind kind)
{
    return failure(AudioRecordingFailure{kind});
}

AudioRecordingFailure failureOf(const WavError& error)
{
    return {error.kind == WavError::Kind::diskFull ? Kind::diskFull : Kind::recorderNotCreated};
}

} // namespace

struct AudioRecordingManager::Recording {
    RecordingRequest request;
    fs::path file;
    Instant startedAt;
    std::unique_ptr<RecordingSink> sink; // outlives the streams, which write into it
    std::vector<std::unique_ptr<AudioInputStream>> streams;
    std::shared_ptr<void> alive = std::make_shared<int>(); // what is posted for this recording is meant for no other
};

AudioRecordingManager::AudioRecordingManager(AudioInput& input, PersistentAppStorage& storage, Clock& clock,
                                             fs::path recordingsFolder, Logger logger)
    : m_input(input), m_storage(storage), m_clock(clock), m_folder(std::move(recordingsFolder)),
      m_logger(std::move(logger))
{}

AudioRecordingManager::~AudioRecordingManager() = default;

Task<Result<void, AudioRecordingFailure>> AudioRecordingManager::start(RecordingRequest request)
{
    if (m_recording)
        co_return failed(Kind::alreadyRecording);
    const auto prepared = prepare(std::move(request));
    if (!prepared) {
        m_logger.error("Cannot start recording: " + userMessage(prepared.error()));
        co_return failure(prepared.error());
    }
    const auto opened = co_await openStreams();
    if (!opened) {
        m_logger.error("Cannot start recording: " + userMessage(opened.error()));
        discard();
    }
    endStarting();
    co_return opened;
}

Result<void, AudioRecordingFailure> AudioRecordingManager::prepare(RecordingRequest request)
{
    setStreamingFile(std::nullopt);
    if (!makeRecordingsFolder(m_folder))
        return failed(Kind::recorderNotCreated);
    const auto file = m_folder / fileName(request);
    auto writer = WavWriter::create(file);
    if (!writer) {
        m_logger.error(fmt::format("Cannot create {}: {}", file.string(), writer.error().detail));
        return failure(failureOf(writer.error()));
    }
    // Before the first sample, so that there is no moment in which a crash loses one.
    const auto batch = m_storage.batch();
    if (const auto stored = m_storage.crashRecoveryInfo.get(); stored != m_recoveryInfo)
        m_earlierRecoveryInfo = stored;
    m_recoveryInfo = AudioCrashRecoveryInfo{file.string(), kWavHeaderSize};
    m_storage.crashRecoveryInfo.set(m_recoveryInfo);
    m_storage.storedIsRecording.set(true);
    m_starting = true;
    m_cancelsStart = false;
    m_endWhileStarting.reset();
    m_recording = std::make_unique<Recording>();
    m_recording->file = file;
    m_recording->startedAt = m_clock.instant();
    m_recording->sink = std::make_unique<RecordingSink>(*std::move(writer), request.mode, endHandler(), m_logger);
    m_recording->request = std::move(request);
    setStreamingFile(file);
    if (m_recording->request.forKeyboardExtension) {
        m_keyboardRecordingStartByte = kWavHeaderSize;
        keyboardExtensionSessionState.set(KeyboardSessionState::loading);
    }
    m_meter.reset();
    publishLevels();
    elapsedTime.set(0);
    recordingMode.set(m_recording->request.mode);
    return {};
}

Task<Result<void, AudioRecordingFailure>> AudioRecordingManager::openStreams()
{
    const auto token = co_await currentStopToken();
    const auto sources = sourcesOf(m_recording->request);
    for (const auto& source : sources) {
        auto& listener = m_recording->sink->listener(source.source);
        auto stream = co_await m_input.open(source, listener);
        if (m_cancelsStart || token.stop_requested())
            co_return failed(Kind::cancelled);
        if (!stream)
            co_return failure(failureOf(stream.error(), source.source));
        if (m_recording->streams.empty())
            startTimers();
        m_recording->streams.push_back(*std::move(stream));
    }
    m_logger.info("Recording started: " + m_recording->file.string());
    if (m_recording->request.forKeyboardExtension)
        keyboardExtensionSessionState.set(KeyboardSessionState::active);
    co_return Result<void, AudioRecordingFailure>();
}

void AudioRecordingManager::endStarting()
{
    m_starting = false;
    for (const auto& resolve : std::exchange(m_startWaiters, {}))
        resolve({});
    if (m_recording && m_endWhileStarting) {
        // From the loop: whoever awaits the start first learns that there is a recording.
        postToMainThread([this, reason = *m_endWhileStarting, alive = std::weak_ptr<void>(m_recording->alive)] {
            if (!alive.expired())
                inputEnded(reason);
        });
    }
}

Task<void> AudioRecordingManager::untilStarted()
{
    if (!m_starting)
        co_return;
    OneShot<std::monostate> started;
    m_startWaiters.push_back(started.resolver());
    [[maybe_unused]] const auto outcome = co_await started;
}

Task<Result<FinishedRecording, AudioRecordingFailure>> AudioRecordingManager::stop()
{
    co_await untilStarted();
    if (m_starting)
        co_return failed(Kind::cancelled); // the stop itself was
    if (!m_recording)
        co_return failed(Kind::noFile);
    const auto recording = endRecording();
    const auto finished = handOver(*recording);
    if (!finished) {
        settle();
        m_logger.error("Cannot finish recording: " + userMessage(finished.error()));
    }
    co_return finished;
}

/// Stops the capture; the sink, which nothing feeds any more, is finished by the caller.
std::unique_ptr<AudioRecordingManager::Recording> AudioRecordingManager::endRecording()
{
    stopTimers();
    auto recording = std::exchange(m_recording, nullptr);
    recording->streams.clear();
    return recording;
}

Result<FinishedRecording, AudioRecordingFailure> AudioRecordingManager::handOver(const Recording& recording)
{
    const auto recorded = recording.sink->finish();
    const auto rawDuration = static_cast<double>(recorded.dataBytes) / kBytesPerSecond;
    const auto header = readWavHeader(recording.file);
    const auto finalDuration = header ? header->duration() : 0;
    m_logger.info(fmt::format("Recording stopped: {}, elapsedTime: {:.3f}, rawDuration: {:.3f}, finalDuration: {:.3f}",
                              recording.file.string(), toSeconds(m_clock.instant() - recording.startedAt), rawDuration,
                              finalDuration));
    m_storage.storedIsRecording.set(false);
    keyboardExtensionSessionState.set(KeyboardSessionState::inactive);
    m_recordedBytes = recorded.dataBytes;
    if (!recording.request.streaming || !header || recorded.dataBytes == 0)
        setStreamingFile(std::nullopt);
    if (!header)
        return failed(header.error().kind == WavError::Kind::notFound ? Kind::fileMissing : Kind::emptyFile);
    if (recorded.dataBytes == 0) {
        std::error_code ignored;
        fs::remove(recording.file, ignored);
        if (recorded.writeError)
            return failure(failureOf(*recorded.writeError));
        if (recorded.interruption)
            return failure(AudioRecordingFailure{Kind::input, recorded.interruption});
        return failed(Kind::emptyFile);
    }
    return FinishedRecording{recording.request.id,
                             audioFile(recording.file, rawDuration, recorded.dataBytes + kWavHeaderSize), rawDuration,
                             recorded.interruption};
}

Task<void> AudioRecordingManager::cancel()
{
    if (m_starting) {
        m_cancelsStart = true;
        co_await untilStarted();
        co_return;
    }
    if (m_recording)
        discard();
    else
        setStreamingFile(std::nullopt);
}

void AudioRecordingManager::discard()
{
    const auto recording = endRecording();
    std::error_code error;
    fs::remove(recording->file, error);
    if (error)
        m_logger.warning(fmt::format("Cannot remove {}: {}", recording->file.string(), error.message()));
    setStreamingFile(std::nullopt);
    clearStored();
    m_logger.info("Recording discarded: " + recording->file.string());
}

void AudioRecordingManager::setStreamingFile(std::optional<fs::path> file)
{
    m_reader.reset();
    m_recordedBytes = 0;
    m_streamingFileURL = std::move(file);
    if (m_streamingFileURL)
        m_reader = RecordingReader::open(*m_streamingFileURL);
}

void AudioRecordingManager::settle()
{
    const auto own = std::exchange(m_recoveryInfo, std::nullopt);
    const auto earlier = std::exchange(m_earlierRecoveryInfo, std::nullopt);
    if (own && m_storage.crashRecoveryInfo.get() == own)
        m_storage.crashRecoveryInfo.set(earlier);
}

void AudioRecordingManager::forget(const AudioCrashRecoveryInfo& info)
{
    const auto batch = m_storage.batch();
    if (m_storage.crashRecoveryInfo.get() == info)
        m_storage.crashRecoveryInfo.set(std::nullopt);
    if (m_earlierRecoveryInfo == info)
        m_earlierRecoveryInfo.reset();
    if (!m_recording)
        m_storage.storedIsRecording.set(false);
}

void AudioRecordingManager::clearStored()
{
    const auto batch = m_storage.batch();
    settle();
    m_storage.storedIsRecording.set(false);
    keyboardExtensionSessionState.set(KeyboardSessionState::inactive);
}

AudioFile AudioRecordingManager::audioFile(const fs::path& file, double duration, std::uint64_t size) const
{
    return {fileBookmark(file, m_clock.now()), duration, static_cast<std::int64_t>(size)};
}

std::function<void(Result<void, AudioInputError>)> AudioRecordingManager::endHandler()
{
    return [this, alive = std::weak_ptr<void>(m_recording->alive)](Result<void, AudioInputError> reason) {
        postToMainThread([this, alive, reason = std::move(reason)] {
            if (!alive.expired())
                inputEnded(reason);
        });
    };
}

void AudioRecordingManager::inputEnded(const Result<void, AudioInputError>& reason)
{
    if (m_starting) {
        m_endWhileStarting = reason;
        return;
    }
    stopTimers();
    m_logger.info(reason ? std::string("The audio input is at its end")
                         : "The audio input ended: " + userMessage(reason.error()));
    ended.emit(reason);
}

void AudioRecordingManager::startTimers()
{
    m_recording->startedAt = m_clock.instant();
    armMeteringTimer();
    armRecordingTimer();
}

void AudioRecordingManager::stopTimers()
{
    m_meteringTimer.reset();
    m_recordingTimer.reset();
    audioLevel.set(0);
    visualAudioLevels.set(std::vector<float>(AudioLevelMeter::kVisualLevels));
}

// Both are armed before anything is published: an observer may stop the recording, and with it the timers.

void AudioRecordingManager::armMeteringTimer()
{
    m_meteringTimer = m_clock.after(kMeteringInterval, [this] {
        armMeteringTimer();
        m_meter.read(m_recording->sink->takePower());
        publishLevels();
    });
}

void AudioRecordingManager::armRecordingTimer()
{
    m_recordingTimer = m_clock.after(kRecordingInterval, [this] {
        armRecordingTimer();
        elapsedTime.set(toSeconds(m_clock.instant() - m_recording->startedAt));
    });
}

void AudioRecordingManager::publishLevels()
{
    audioLevel.set(m_meter.audioLevel());
    if (m_recording)
        visualAudioLevels.set(m_meter.visualAudioLevels());
}

Result<std::vector<std::uint8_t>, AudioReadError> AudioRecordingManager::readNewAudio()
{
    if (!m_streamingFileURL || !m_reader)
        return failure(AudioReadError(AudioRecordingFailure{Kind::noStreamingFile}));
    const auto start = m_reader->lastProcessedBytes();
    const auto end = kWavHeaderSize + (m_recording ? m_recording->sink->dataBytes() : m_recordedBytes);
    m_logger.debug(fmt::format("Reading new audio, size: {}, start byte: {}", end, start));
    auto bytes = m_reader->read(end);
    if (bytes.empty())
        return failure(AudioReadError(AudioRecordingError{AudioRecordingError::Kind::noNewAudioDataAvailable, end}));
    m_logger.debug(fmt::format("Read {} bytes (from byte {})", bytes.size(), start));
    return bytes;
}

std::uint64_t AudioRecordingManager::lastProcessedBytes() const
{
    return m_reader ? m_reader->lastProcessedBytes() : 0;
}

Task<Result<RecoveredRecording, RecordingRecoveryFailure>> AudioRecordingManager::recover(AudioCrashRecoveryInfo info)
{
    if (!m_recoveryWorker)
        m_recoveryWorker = std::make_unique<Worker>();
    const auto job = [info, folder = m_folder, logger = m_logger](const StopToken&) {
        return recoverRecording(info, folder, logger);
    };
    const auto outcome = co_await m_recoveryWorker->run(job);
    if (!outcome)
        co_return failure(RecordingRecoveryFailure::cancelled);
    const auto& recovered = *outcome;
    if (!recovered) {
        const auto why = recovered.error();
        if (why == RecordingRecoveryFailure::fileMissing || why == RecordingRecoveryFailure::empty)
            forget(info);
        co_return failure(why);
    }
    co_return RecoveredRecording{recovered->id, audioFile(recovered->path, recovered->duration, recovered->size)};
}

} // namespace vocalith
