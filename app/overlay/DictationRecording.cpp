#include "app/overlay/DictationRecording.h"

#include "core/storage/history/HistoryService.h"

#include <system_error>

namespace vocalith {
namespace {

std::filesystem::path pathOf(const FinishedRecording& recording)
{
    return filePath(recording.audioFile.fileBookmark).value_or(std::filesystem::path());
}

} // namespace

DictationRecording::DictationRecording(AudioRecordingManager& recorder, HistoryService& history, double minimumDuration,
                                       Logger logger)
    : m_recorder(recorder), m_history(history), m_minimumDuration(minimumDuration), m_logger(std::move(logger))
{}

void DictationRecording::begin(Uuid sessionID, Date creationDate)
{
    m_sessionID = sessionID;
    m_creationDate = creationDate;
    m_file.reset();
    m_interruption.reset();
}

Task<Result<void, AudioRecordingFailure>> DictationRecording::stop()
{
    if (m_file)
        co_return Result<void, AudioRecordingFailure>();
    auto stopped = co_await m_recorder.stop();
    if (!stopped)
        co_return failure(stopped.error());
    m_file = std::move(*stopped);
    if (m_file->interruption)
        m_interruption = m_file->interruption;
    co_return Result<void, AudioRecordingFailure>();
}

bool DictationRecording::isLongEnough() const
{
    return m_file && m_file->elapsedTime > m_minimumDuration;
}

Task<dictation_outcome::Failed> DictationRecording::failureOf(std::string reason)
{
    dictation_outcome::Failed failed{.message = std::move(reason)};
    const auto entry = co_await m_history.entry(m_sessionID);
    if (entry) {
        failed.historyEntry = m_sessionID;
        failed.historyHasText = transcript(*entry) != nullptr;
    }
    co_return failed;
}

Task<dictation_outcome::Failed> DictationRecording::keep(dictation_outcome::Failed failed)
{
    if (!m_file)
        co_return failed;
    failed.recording = pathOf(*m_file);
    if (!failed.historyEntry && m_history.isEnabled()) {
        const HistoryEntry::DictationEntry failure = HistoryEntry::FailureData{m_file->audioFile, failed.message};
        const HistoryEntry entry{m_sessionID, m_creationDate, failure};
        const auto kept = co_await m_history.upsert(entry);
        if (kept)
            failed.historyEntry = entry.id;
    }
    co_return failed;
}

void DictationRecording::remove()
{
    if (!m_file)
        return;
    const auto path = pathOf(*m_file);
    m_file.reset();
    std::error_code error;
    std::filesystem::remove(path, error);
    if (error)
        m_logger.warning("Cannot remove the recording " + path.string() + ": " + error.message());
}

void DictationRecording::letGo()
{
    m_recorder.settle();
    m_file.reset();
}

} // namespace vocalith
