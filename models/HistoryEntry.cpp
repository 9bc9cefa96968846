#include "models/HistoryEntry.h"

namespace vocalith {
namespace {

using SuccessData = HistoryEntry::SuccessData;
using FailureData = HistoryEntry::FailureData;
using VoiceJournalEntry = HistoryEntry::VoiceJournalEntry;

template <class... Visitors>
struct Overloaded : Visitors... {
    using Visitors::operator()...;
};
template <class... Visitors>
Overloaded(Visitors...) -> Overloaded<Visitors...>;

/// Calls the visitor with the one of the four records that the entry holds.
template <class Visitor>
auto visitRecord(const HistoryEntry& entry, const Visitor& visitor)
{
    const auto dictation = [&](const HistoryEntry::DictationEntry& either) { return std::visit(visitor, either); };
    return std::visit(Overloaded{dictation, visitor}, entry.content);
}

const AITransform* transformOf(const HistoryEntry& entry)
{
    using Found = const AITransform*;
    return visitRecord(
        entry, Overloaded{[](const FailureData&) -> Found { return nullptr; },
                          [](const FileTranscriptionProject&) -> Found { return nullptr; },
                          [](const auto& made) -> Found { return made.transform ? &*made.transform : nullptr; }});
}

} // namespace

const TranscriptionData* transcript(const HistoryEntry& entry)
{
    using Found = const TranscriptionData*;
    return visitRecord(entry, Overloaded{[](const FailureData&) -> Found { return nullptr; },
                                         [](const FileTranscriptionProject& project) -> Found {
                                             const auto* done =
                                                 std::get_if<FileTranscriptionProject::Completed>(&project.state);
                                             return done ? &done->transcript : nullptr;
                                         },
                                         [](const auto& made) -> Found { return &made.result.transcriptionData; }});
}

std::string finalText(const HistoryEntry& entry)
{
    if (const auto* transform = transformOf(entry))
        return transform->finalText;
    const auto* recognised = transcript(entry);
    return recognised ? plainText(*recognised) : std::string();
}

const AudioFile& audioFile(const HistoryEntry& entry)
{
    using Found = const AudioFile*;
    return *visitRecord(entry,
                        Overloaded{[](const FailureData& failed) -> Found { return &failed.audioFile; },
                                   [](const FileTranscriptionProject& project) -> Found { return &project.audioFile; },
                                   [](const auto& made) -> Found { return &made.result.audioFile; }});
}

const AIPrompt* usedPrompt(const HistoryEntry& entry)
{
    if (const auto* transform = transformOf(entry))
        return &transform->prompt;
    const auto* dictation = std::get_if<HistoryEntry::DictationEntry>(&entry.content);
    const auto* success = dictation ? std::get_if<SuccessData>(dictation) : nullptr;
    return success && success->aiPrompt ? &*success->aiPrompt : nullptr;
}

const std::string* errorMessage(const HistoryEntry& entry)
{
    using Found = const std::string*;
    return visitRecord(entry, Overloaded{[](const FailureData& failed) -> Found { return &failed.errorMessage; },
                                         [](const FileTranscriptionProject& project) -> Found {
                                             const auto* failed =
                                                 std::get_if<FileTranscriptionProject::Failed>(&project.state);
                                             return failed ? &failed->message : nullptr;
                                         },
                                         [](const auto&) -> Found { return nullptr; }});
}

} // namespace vocalith
