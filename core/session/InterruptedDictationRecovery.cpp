#include "core/session/InterruptedDictationRecovery.h"

#include "core/audio/AudioRecordingManager.h"
#include "core/storage/ProcessLock.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"

namespace vocalith {
namespace {

constexpr const char* kInterrupted = "Recording interrupted — app was terminated";

std::filesystem::path pathOf(const AudioFile& audio)
{
    return filePath(audio.fileBookmark).value_or(std::filesystem::path());
}

} // namespace

Task<std::optional<InterruptedDictation>> InterruptedDictationRecovery::recover()
{
    const auto info = m_appStorage.crashRecoveryInfo.get();
    if (!info)
        co_return std::nullopt;
    const std::filesystem::path abandoned = info->recordingFilePath;
    auto kept = co_await alreadyKept(abandoned);
    if (kept) {
        m_audioRecordingManager.forget(*info);
        co_return kept;
    }
    const auto recovered = co_await m_audioRecordingManager.recover(*info);
    if (!recovered) {
        const bool isStillThere = recovered.error() == RecordingRecoveryFailure::diskFull ||
                                  recovered.error() == RecordingRecoveryFailure::failed;
        if (!isStillThere)
            co_return std::nullopt;
        co_return InterruptedDictation{.recording = abandoned, .failure = recovered.error()};
    }
    InterruptedDictation found{.recording = pathOf(recovered->audioFile), .duration = recovered->audioFile.duration};
    if (m_historyService.isEnabled()) {
        const auto entryID = co_await keep(recovered->id, recovered->audioFile);
        found.entryID = entryID;
    }
    // An entry that is wanted but could not be written yet is tried again the next time.
    if (found.entryID || !m_historyService.isEnabled())
        m_audioRecordingManager.forget(*info);
    co_return found;
}

Task<std::optional<InterruptedDictation>>
InterruptedDictationRecovery::recoverUnlessDictating(std::filesystem::path lockFile)
{
    if (!m_appStorage.crashRecoveryInfo.get())
        co_return std::nullopt;
    const auto lock = ProcessLock::take(lockFile);
    if (!lock)
        co_return std::nullopt;
    co_return co_await recover();
}

/// The end may have come between the write of an entry and the end of its dictation, or of its recovery.
Task<std::optional<InterruptedDictation>> InterruptedDictationRecovery::alreadyKept(std::filesystem::path recording)
{
    const auto id = recordingID(recording);
    if (!id)
        co_return std::nullopt;
    const auto entry = co_await m_historyService.entry(*id);
    if (!entry)
        co_return std::nullopt;
    const auto& audio = audioFile(*entry);
    co_return InterruptedDictation{.recording = pathOf(audio),
                                   .duration = audio.duration,
                                   .entryID = *id,
                                   .hasText = transcript(*entry) != nullptr};
}

Task<std::optional<Uuid>> InterruptedDictationRecovery::keep(Uuid id, AudioFile audioFile)
{
    // As new as its recovery: its user has not seen it yet, so no retention may be due.
    const Date creationDate = audioFile.fileBookmark.createdAt;
    const HistoryEntry::DictationEntry failed = HistoryEntry::FailureData{std::move(audioFile), kInterrupted};
    const HistoryEntry entry{id, creationDate, failed};
    const auto kept = co_await m_historyService.upsert(entry);
    co_return kept ? std::optional(id) : std::nullopt;
}

} // namespace vocalith
