#include "app/cli/history/text/HistoryText.h"

#include "app/cli/history/text/HistoryDates.h"
#include "app/cli/history/text/HistoryOutput.h"
#include "app/cli/text/ColumnText.h"
#include "base/Json.h"
#include "base/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <system_error>

namespace vocalith {
namespace {

using Colour = Terminal::Colour;
using Project = FileTranscriptionProject;

constexpr std::size_t kShortID = 8;
constexpr std::size_t kFewestColumns = 10; // for the words, however narrow the terminal is

const char* kindOf(const HistoryEntry& entry)
{
    if (std::holds_alternative<Project>(entry.content))
        return "file";
    return std::holds_alternative<HistoryEntry::VoiceJournalEntry>(entry.content) ? "journal" : "dictation";
}

/// What is to be said of an entry that did not fail and has no text.
const char* statusOf(const HistoryEntry& entry)
{
    const auto* project = std::get_if<Project>(&entry.content);
    return project && !std::holds_alternative<Project::Completed>(project->state) ? "(not transcribed yet)"
                                                                                  : "(no text)";
}

std::string clean(std::string_view text)
{
    return cleanText(text, ' ');
}

std::string recordingText(const HistoryEntry& entry)
{
    const auto recording = recordingOf(entry);
    if (!recording)
        return "none on this machine";
    std::error_code error;
    const bool isThere = std::filesystem::is_regular_file(*recording, error);
    return clean(recording->string()) + (isThere ? "" : " (not there any more)");
}

} // namespace

std::string shortID(const Uuid& id)
{
    return id.toString().substr(0, kShortID);
}

std::string firstWords(const std::string& text, std::size_t columns)
{
    auto words = clean(text);
    std::replace(words.begin(), words.end(), '\t', ' '); // takes nobody knows how many columns
    return fitted(words, columns);
}

std::optional<std::filesystem::path> recordingOf(const HistoryEntry& entry)
{
    return filePath(audioFile(entry).fileBookmark);
}

std::string historyLine(const HistoryEntry& entry, const HistoryOutput& output)
{
    const auto head = fmt::format("{}  {}  {:<9}  {:>7}  ", shortID(entry.id), localDateAndTime(entry.creationDate),
                                  kindOf(entry), durationText(audioFile(entry).duration));
    const auto columns = std::max(output.columns(), head.size() + kFewestColumns) - head.size();
    if (const auto* error = errorMessage(entry))
        return head + output.coloured(Colour::red, firstWords("Failed: " + *error, columns));
    const auto words = firstWords(finalText(entry), columns);
    return head + (words.empty() ? output.coloured(Colour::dim, fitted(statusOf(entry), columns)) : words);
}

std::string historyDetails(const HistoryEntry& entry, const HistoryOutput& output)
{
    std::string text;
    const auto add = [&](const char* name, const std::string& value) {
        text += fmt::format("{:<11}{}\n", name, value);
    };
    const auto addText = [&](const char* name, const std::string& value) {
        text += '\n' + output.coloured(Colour::bold, name) + '\n' + cleanText(value, '\n') + '\n';
    };
    add("ID", entry.id.toString());
    add("Created", localDateAndTime(entry.creationDate));
    add("Kind", kindOf(entry));
    add("Duration", durationText(audioFile(entry).duration));
    const auto* recognised = transcript(entry);
    if (recognised)
        add("Model", clean(toString(recognised->modelId)));
    if (const auto* prompt = usedPrompt(entry))
        add("Prompt", clean(prompt->name));
    add("Recording", recordingText(entry));
    const auto* error = errorMessage(entry);
    if (error)
        add("Failed", output.coloured(Colour::red, clean(*error)));
    const auto recognisedText = recognised ? plainText(*recognised) : std::string();
    if (!recognisedText.empty())
        addText("Transcript", recognisedText);
    if (finalText(entry) != recognisedText)
        addText("Final text", finalText(entry));
    if (!error && finalText(entry).empty())
        text += fmt::format("\n{}\n", statusOf(entry));
    return text;
}

std::string storedForm(const HistoryEntry& entry)
{
    return dumpJson(toJson(entry), 2) + '\n';
}

} // namespace vocalith
