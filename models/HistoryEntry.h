#pragma once

#include "models/AIConversation.h"
#include "models/AIPrompt.h"
#include "models/DictationResult.h"
#include "models/FileTranscriptionProject.h"

#include <optional>
#include <string>
#include <variant>

namespace vocalith {

/// The AI rewrite of a dictation.
struct AITransform {
    AIPrompt prompt;       ///< as it was when it ran: later edits of the prompt do not change the history
    std::string finalText; ///< the text that was output

    bool operator==(const AITransform&) const = default;
};

/// One entry of the history: a dictation that succeeded or failed, a transcribed file, or an entry of the voice
/// journal.
struct HistoryEntry {
    struct SuccessData {
        DictationResult result;
        std::optional<AIPrompt> aiPrompt;           ///< the prompt that was active
        std::optional<AITransform> transform;       ///< when an AI rewrite ran
        std::optional<AIConversation> conversation; ///< when the prompt used tools

        bool operator==(const SuccessData&) const = default;
    };

    struct FailureData {
        AudioFile audioFile;
        std::string errorMessage; ///< as shown to the user

        bool operator==(const FailureData&) const = default;
    };

    struct VoiceJournalEntry {
        DictationResult result;
        std::optional<AITransform> transform;
        std::optional<AIConversation> conversation;

        bool operator==(const VoiceJournalEntry&) const = default;
    };

    using DictationEntry = std::variant<SuccessData, FailureData>;
    using Content = std::variant<DictationEntry, FileTranscriptionProject, VoiceJournalEntry>;

    Uuid id;
    Date creationDate;
    Content content;

    bool operator==(const HistoryEntry&) const = default;
};

/// The text that the user got or would get: after the AI rewrite where one ran. Empty for an entry that has none (yet).
std::string finalText(const HistoryEntry& entry);
/// What was recognised, or nullptr.
const TranscriptionData* transcript(const HistoryEntry& entry);
/// The recording, or the file that was transcribed.
const AudioFile& audioFile(const HistoryEntry& entry);
/// The prompt that the entry was made with: as it was when it ran, where it did. nullptr without one.
const AIPrompt* usedPrompt(const HistoryEntry& entry);
/// Why there is no text, as it was shown to the user; nullptr for an entry that did not fail.
const std::string* errorMessage(const HistoryEntry& entry);

constexpr auto jsonFields(JsonType<AITransform>)
{
    return fields(field("prompt", &AITransform::prompt), field("finalText", &AITransform::finalText));
}

constexpr auto jsonFields(JsonType<HistoryEntry::SuccessData>)
{
    using SuccessData = HistoryEntry::SuccessData;
    return fields(field("result", &SuccessData::result), field("aiPrompt", &SuccessData::aiPrompt),
                  field("transform", &SuccessData::transform), field("conversation", &SuccessData::conversation));
}

constexpr auto jsonFields(JsonType<HistoryEntry::FailureData>)
{
    using FailureData = HistoryEntry::FailureData;
    return fields(field("audioFile", &FailureData::audioFile), field("errorMessage", &FailureData::errorMessage));
}

constexpr auto jsonFields(JsonType<HistoryEntry::VoiceJournalEntry>)
{
    using VoiceJournalEntry = HistoryEntry::VoiceJournalEntry;
    return fields(field("result", &VoiceJournalEntry::result), field("transform", &VoiceJournalEntry::transform),
                  field("conversation", &VoiceJournalEntry::conversation));
}

constexpr auto jsonUnion(JsonType<HistoryEntry::DictationEntry>)
{
    return taggedUnion(unlabelled("success"), unlabelled("failure"));
}

constexpr auto jsonUnion(JsonType<HistoryEntry::Content>)
{
    return taggedUnion(unlabelled("dictation"), unlabelled("fileTranscription"), unlabelled("voiceJournal"));
}

constexpr auto jsonFields(JsonType<HistoryEntry>)
{
    return fields(field("id", &HistoryEntry::id), field("creationDate", &HistoryEntry::creationDate),
                  field("content", &HistoryEntry::content));
}

} // namespace vocalith
