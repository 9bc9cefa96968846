#include "core/session/HistoryEntryActionsService.h"

#include "base/Clock.h"
#include "core/pipeline/replacements/WordReplacementService.h"
#include "core/storage/history/HistoryService.h"
#include "ports/Notices.h"

#include <system_error>
#include <utility>

namespace vocalith {
namespace {

using Kind = HistoryActionError::Kind;
using SuccessData = HistoryEntry::SuccessData;
using FailureData = HistoryEntry::FailureData;
using VoiceJournalEntry = HistoryEntry::VoiceJournalEntry;
using DictationEntry = HistoryEntry::DictationEntry;

Failure<HistoryActionError> failed(Kind kind, std::string detail = {})
{
    return failure(HistoryActionError{kind, std::move(detail)});
}

HistoryActionError errorOf(const HistoryError& error)
{
    if (error.kind == HistoryError::Kind::cancelled)
        return {Kind::cancelled};
    return {Kind::entry, userMessage(error)};
}

/// The words that there are by now go with the error.
Failure<HistoryActionError> failed(HistoryActionError error, std::string text)
{
    error.text = std::move(text);
    return failure(std::move(error));
}

Failure<HistoryActionError> failed(SessionError error)
{
    if (error.kind == SessionError::Kind::cancelled)
        return failed(Kind::cancelled);
    return failure(HistoryActionError{Kind::recognition, {}, std::move(error)});
}

/// Notes that an action is under way for an entry, for as long as it lives; holds nothing when one was already.
class UnderWay {
public:
    UnderWay(Observable<std::set<Uuid>>& entryIDs, const Uuid& id) : m_entryIDs(entryIDs), m_id(id)
    {
        auto ids = m_entryIDs.get();
        m_isFirst = ids.insert(id).second;
        m_entryIDs.set(std::move(ids));
    }
    UnderWay(const UnderWay&) = delete;
    UnderWay& operator=(const UnderWay&) = delete;
    ~UnderWay()
    {
        if (!m_isFirst)
            return;
        auto ids = m_entryIDs.get();
        ids.erase(m_id);
        m_entryIDs.set(std::move(ids));
    }

    bool isFirst() const { return m_isFirst; }

private:
    Observable<std::set<Uuid>>& m_entryIDs;
    const Uuid m_id;
    bool m_isFirst = false;
};

template <class Dictation>
void replaceTranscript(Dictation& dictation, TranscriptionData transcript)
{
    dictation.result.transcriptionData = std::move(transcript);
    dictation.transform.reset();
    dictation.conversation.reset();
}

/// The entry with another transcript. What has words already is copied under `newID`, so that it keeps them.
HistoryEntry withTranscript(HistoryEntry entry, TranscriptionData transcript, const Uuid& newID, Date now)
{
    if (auto* project = std::get_if<FileTranscriptionProject>(&entry.content)) {
        project->state = FileTranscriptionProject::Completed{std::move(transcript)};
        return entry;
    }
    auto* dictation = std::get_if<DictationEntry>(&entry.content);
    if (auto* failure = dictation ? std::get_if<FailureData>(dictation) : nullptr) {
        DictationResult result{entry.id, std::move(failure->audioFile), std::move(transcript)};
        *dictation = SuccessData{std::move(result), std::nullopt, std::nullopt, std::nullopt};
        return entry;
    }
    entry.id = newID;
    entry.creationDate = now;
    if (dictation)
        replaceTranscript(std::get<SuccessData>(*dictation), std::move(transcript));
    else
        replaceTranscript(std::get<VoiceJournalEntry>(entry.content), std::move(transcript));
    return entry;
}

/// Whether the entry could take the rewrite.
bool setTransform(HistoryEntry& entry, const AITransform& transform)
{
    const auto set = [&](auto& dictation) {
        dictation.transform = transform;
        dictation.conversation.reset(); // of the rewrite that was there before
        return true;
    };
    if (auto* journal = std::get_if<VoiceJournalEntry>(&entry.content))
        return set(*journal);
    auto* dictation = std::get_if<DictationEntry>(&entry.content);
    auto* success = dictation ? std::get_if<SuccessData>(dictation) : nullptr;
    return success && set(*success);
}

} // namespace

std::string userMessage(const HistoryActionError& error)
{
    switch (error.kind) {
    case Kind::alreadyRunning: return "This is already being done for this entry. Wait until it has ended.";
    case Kind::entry:
    case Kind::prompt: return error.detail;
    case Kind::audioMissing:
        return error.detail.empty() ? "The recording of this entry is not on this machine."
                                    : "The recording of this entry is not there any more: \"" + error.detail + "\"";
    case Kind::recognition:
        return error.recognition.kind == SessionError::Kind::engine ? userMessage(error.recognition.cause)
                                                                    : userMessage(error.recognition);
    case Kind::noText: return "This entry has no dictated text to which a prompt could be applied.";
    case Kind::cancelled: return "Cancelled";
    }
    return {};
}

HistoryEntryActionsService::HistoryEntryActionsService(HistoryService& history,
                                                       TranscriptionSessionManager& sessionManager,
                                                       WordReplacementService& replacements, Notices& alertService,
                                                       const Clock& clock, PromptRunner runPrompt, Logger logger)
    : m_history(history), m_sessionManager(sessionManager), m_replacements(replacements), m_alertService(alertService),
      m_clock(clock), m_runPrompt(std::move(runPrompt)), m_logger(std::move(logger))
{}

Task<HistoryEntryActionsService::Outcome>
HistoryEntryActionsService::retryTranscription(Uuid entryID, TranscriptionModelID modelID,
                                               std::function<void(double)> progress)
{
    const UnderWay underWay(retryingTranscriptionEntryIDs, entryID);
    if (!underWay.isFirst())
        co_return failed(Kind::alreadyRunning);
    auto outcome = co_await retry(entryID, std::move(modelID), std::move(progress));
    if (!outcome)
        m_logger.error("Cannot transcribe entry " + entryID.toString() + " again: " + userMessage(outcome.error()));
    co_return outcome;
}

Task<HistoryEntryActionsService::Outcome> HistoryEntryActionsService::retry(Uuid entryID, TranscriptionModelID modelID,
                                                                            std::function<void(double)> progress)
{
    const auto entry = co_await find(entryID);
    if (!entry)
        co_return failure(entry.error());
    const auto recording = filePath(audioFile(*entry).fileBookmark).value_or(std::filesystem::path());
    std::error_code error;
    if (!std::filesystem::is_regular_file(recording, error))
        co_return failed(Kind::audioMissing, recording.string());

    const auto engine = co_await takeEngine();
    if (!engine)
        co_return failure(engine.error());
    auto transcript = co_await transcribe(recording, std::move(modelID), std::move(progress));
    giveEngineBack();
    if (!transcript)
        co_return failure(std::move(transcript.error()));
    co_return co_await keepTranscript(entryID, *std::move(transcript));
}

Task<Result<TranscriptionData, HistoryActionError>>
HistoryEntryActionsService::transcribe(std::filesystem::path recording, TranscriptionModelID modelID,
                                       std::function<void(double)> progress)
{
    auto engine = m_sessionManager.setEngine(modelID, TranscriptionSource::file);
    if (!engine)
        co_return failed(SessionError{SessionError::Kind::engine, std::move(engine.error())});
    const FileTranscriptionRequest request{std::move(recording)};
    auto transcript = co_await m_sessionManager.transcribeFile(request, std::move(progress));
    m_sessionManager.releaseEngine();
    if (!transcript)
        co_return failed(std::move(transcript.error()));
    co_return *std::move(transcript);
}

/// The session has one engine, so one entry is transcribed at a time and the others wait.
Task<Result<void, HistoryActionError>> HistoryEntryActionsService::takeEngine()
{
    while (m_engineIsTaken) {
        OneShot<std::monostate> free;
        m_waitingForEngine.push_back(free.resolver());
        const auto waited = co_await free;
        if (!waited)
            co_return failed(Kind::cancelled);
    }
    m_engineIsTaken = true;
    co_return Result<void, HistoryActionError>();
}

void HistoryEntryActionsService::giveEngineBack()
{
    m_engineIsTaken = false;
    // All of them: the first one may have been cancelled meanwhile.
    for (const auto& resolve : std::exchange(m_waitingForEngine, {}))
        resolve({});
}

Task<HistoryEntryActionsService::Outcome> HistoryEntryActionsService::keepTranscript(Uuid entryID,
                                                                                     TranscriptionData transcript)
{
    auto entry = co_await find(entryID); // it may have changed while its recording was transcribed
    if (!entry)
        co_return failed(std::move(entry.error()), plainText(transcript));
    auto changed = withTranscript(*std::move(entry), std::move(transcript), Uuid::random(), m_clock.now());
    co_return co_await keep(std::move(changed));
}

Task<HistoryEntryActionsService::Outcome> HistoryEntryActionsService::applyPrompt(Uuid entryID, AIPrompt prompt)
{
    const UnderWay underWay(applyingPromptEntryIDs, entryID);
    if (!underWay.isFirst())
        co_return failed(Kind::alreadyRunning);
    auto outcome = co_await rewrite(entryID, std::move(prompt));
    if (!outcome && outcome.error().kind != Kind::cancelled) {
        const std::string message = userMessage(outcome.error());
        m_logger.error("history_apply_prompt_error: " + message);
        m_alertService.show(message);
    }
    co_return outcome;
}

Task<HistoryEntryActionsService::Outcome> HistoryEntryActionsService::rewrite(Uuid entryID, AIPrompt prompt)
{
    const auto entry = co_await find(entryID);
    if (!entry)
        co_return failure(entry.error());
    const auto* recognised = transcript(*entry);
    if (!recognised || std::holds_alternative<FileTranscriptionProject>(entry->content))
        co_return failed(Kind::noText);
    if (!m_runPrompt)
        co_return failed(Kind::prompt, "No AI provider is set up.");
    const auto stop = co_await currentStopToken();
    const auto text = co_await withReplacements(WordReplacementTiming::beforeAI, plainText(*recognised));
    if (stop.stop_requested())
        co_return failed(Kind::cancelled);
    auto answer = co_await m_runPrompt(prompt, text);
    if (stop.stop_requested())
        co_return failed(Kind::cancelled);
    if (!answer)
        co_return failed(Kind::prompt, std::move(answer.error()));
    auto finalText = co_await withReplacements(WordReplacementTiming::afterAI, *std::move(answer));
    if (stop.stop_requested())
        co_return failed(Kind::cancelled);
    AITransform transform{std::move(prompt), std::move(finalText)};
    co_return co_await keepTransform(entryID, std::move(transform));
}

Task<std::string> HistoryEntryActionsService::withReplacements(WordReplacementTiming timing, std::string text)
{
    auto list = m_replacements.replacements(timing);
    auto replaced = co_await m_replacements.apply(std::move(list), std::move(text));
    co_return std::move(replaced.text);
}

Task<HistoryEntryActionsService::Outcome> HistoryEntryActionsService::keepTransform(Uuid entryID, AITransform transform)
{
    auto entry = co_await find(entryID);
    if (!entry)
        co_return failed(std::move(entry.error()), std::move(transform.finalText));
    if (!setTransform(*entry, transform))
        co_return failed(HistoryActionError{Kind::noText}, std::move(transform.finalText));
    co_return co_await keep(*std::move(entry));
}

Task<HistoryEntryActionsService::Outcome> HistoryEntryActionsService::find(Uuid entryID)
{
    auto entry = co_await m_history.entry(entryID);
    if (!entry)
        co_return failure(errorOf(entry.error()));
    co_return *std::move(entry);
}

/// The user asked for it, so it is written even where no new dictations are kept.
Task<HistoryEntryActionsService::Outcome> HistoryEntryActionsService::keep(HistoryEntry entry)
{
    const auto kept = co_await m_history.upsert(entry);
    if (!kept)
        co_return failed(errorOf(kept.error()), finalText(entry));
    co_return entry;
}

} // namespace vocalith
