#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "base/OneShot.h"
#include "core/session/TranscriptionSessionManager.h"
#include "core/storage/history/HistoryError.h"
#include "models/HistoryEntry.h"
#include "models/WordReplacement.h"

#include <set>
#include <vector>

namespace vocalith {

class Clock;
class HistoryService;
class Notices;
class WordReplacementService;

/// Why an action on an entry of the history failed. The entry is then as it was.
struct HistoryActionError {
    enum class Kind {
        alreadyRunning, ///< the same action is under way for this entry
        entry,          ///< it could not be read or written; `detail` is the sentence that says why
        audioMissing,   ///< `detail` is where its recording was
        recognition,    ///< `recognition` says why
        noText,         ///< there is nothing to apply a prompt to
        prompt,         ///< `detail` is the sentence that says why
        cancelled
    };
    Kind kind = Kind::cancelled;
    std::string detail{};
    SessionError recognition{};
    /// The words that the action had yielded when its entry could not be written. Nothing else has them.
    std::string text{};
    bool operator==(const HistoryActionError&) const = default;
};

/// The sentence that is shown to the user.
std::string userMessage(const HistoryActionError& error);

/// What a user can do with an entry of the history. One entry never runs the same action twice at once. Lives as long
/// as the program; main thread. A stop ends an action with `cancelled`, and its entry is as it was.
class HistoryEntryActionsService {
public:
    using EntryIDs = std::set<Uuid>;
    /// Lets the language model of the prompt rewrite a text. The error is a sentence for people.
    using PromptRunner = std::function<Task<Result<std::string, std::string>>(AIPrompt prompt, std::string text)>;
    using Outcome = Result<HistoryEntry, HistoryActionError>;

    /// `sessionManager` is this service's own: no dictation runs in it. Without `runPrompt` no prompt can be applied.
    HistoryEntryActionsService(HistoryService& history, TranscriptionSessionManager& sessionManager,
                               WordReplacementService& replacements, Notices& alertService, const Clock& clock,
                               PromptRunner runPrompt, Logger logger);

    /// Transcribes the entry's recording once more, with that model; yields the entry as it is kept. A failed entry
    /// becomes a successful one, a file gets its new transcript. A dictation that has words keeps them: its new
    /// transcript is a new entry, which shares the recording. `progress` is told 0..1.
    Task<Outcome> retryTranscription(Uuid entryID, TranscriptionModelID modelID, std::function<void(double)> progress);
    /// Rewrites what the entry's dictation was recognised as, in place of an earlier rewrite. The word replacements
    /// apply before and after, as in a dictation; what was recognised stays as it is.
    Task<Outcome> applyPrompt(Uuid entryID, AIPrompt prompt);

    Observable<EntryIDs> retryingTranscriptionEntryIDs;
    Observable<EntryIDs> applyingPromptEntryIDs;

private:
    Task<Outcome> retry(Uuid entryID, TranscriptionModelID modelID, std::function<void(double)> progress);
    Task<Result<TranscriptionData, HistoryActionError>>
    transcribe(std::filesystem::path recording, TranscriptionModelID modelID, std::function<void(double)> progress);
    Task<Outcome> keepTranscript(Uuid entryID, TranscriptionData transcript);
    Task<Outcome> rewrite(Uuid entryID, AIPrompt prompt);
    Task<std::string> withReplacements(WordReplacementTiming timing, std::string text);
    Task<Outcome> keepTransform(Uuid entryID, AITransform transform);
    /// An error bears the entry's text: it is nowhere else.
    Task<Outcome> keep(HistoryEntry entry);
    Task<Outcome> find(Uuid entryID);
    Task<Result<void, HistoryActionError>> takeEngine();
    void giveEngineBack();

    HistoryService& m_history;
    TranscriptionSessionManager& m_sessionManager;
    WordReplacementService& m_replacements;
    Notices& m_alertService;
    const Clock& m_clock;
    const PromptRunner m_runPrompt;
    const Logger m_logger;

    bool m_engineIsTaken = false;
    std::vector<OneShot<std::monostate>::Resolver> m_waitingForEngine;
};

} // namespace vocalith
