#include "app/cli/replacements/ReplacementsCommand.h"

#include "app/cli/ExitCode.h"
#include "app/cli/replacements/ReplacementsTable.h"
#include "app/cli/terminal/Terminal.h"
#include "base/AtomicFile.h"
#include "core/pipeline/replacements/WordReplacementRules.h"
#include "core/pipeline/replacements/WordReplacementService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "core/storage/settings/rules/SettingWords.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <set>

namespace vocalith {
namespace {

namespace fs = std::filesystem;
using Timing = WordReplacementTiming;

constexpr std::size_t kNoIndex = std::numeric_limits<std::size_t>::max();

Result<std::string, FileError> textOf(const fs::path& file)
{
    return file == "-" ? readStandardInput() : readWholeFile(file);
}

/// The format that the name of the file tells.
std::optional<ReplacementFormat> formatOf(const fs::path& file)
{
    const auto extension = file.extension();
    if (extension == ".json")
        return ReplacementFormat::json;
    if (extension == ".csv" || extension == ".tsv")
        return ReplacementFormat::csv;
    return std::nullopt;
}

std::string line(const std::vector<WordReplacement>& list, std::size_t index)
{
    auto text = replacementsTable(list, {index});
    text.pop_back();
    return text;
}

Task<int> asTask(int exitCode)
{
    co_return exitCode;
}

Task<int> asTask(Task<int> task)
{
    return task;
}

const char* times(std::size_t count)
{
    return count == 1 ? "time" : "times";
}

} // namespace

ReplacementsCommand::ReplacementsCommand(PersistentAppStorage& storage, WordReplacementService& service,
                                         Terminal& terminal)
    : m_storage(storage), m_service(service), m_terminal(terminal)
{
    m_storage.leaveFailedWrites(); // `store` says what a one-off command has to say of them
}

Task<int> ReplacementsCommand::run(const ReplacementsOptions& options)
{
    return std::visit([this](const auto& chosen) { return asTask(run(chosen)); }, options);
}

int ReplacementsCommand::run(const ReplacementsListOptions& options)
{
    const auto& list = m_storage.wordReplacements.get();
    if (options.json)
        return print(writeReplacements(list, ReplacementFormat::json));
    if (m_storage.isUnreadable(m_storage.wordReplacements))
        m_terminal.line("Some of the stored entries cannot be read by this version. They are kept, and not used.");
    if (list.empty())
        m_terminal.line("There are no word replacements. Add one, e.g.: vocalith replacements add colour color");
    return print(replacementsTable(list));
}

int ReplacementsCommand::run(const ReplacementsAddOptions& options)
{
    const WordReplacement entry{Uuid::random(), options.original, options.replacement, options.isRegex, options.timing};
    if (const auto checked = check(entry, kNoIndex); !checked)
        return complain(checked.error(), exitUsage);
    auto list = m_storage.wordReplacements.get();
    list.push_back(entry);
    const auto added = line(list, list.size() - 1);
    warn(entry);
    return store(std::move(list), added);
}

int ReplacementsCommand::run(const ReplacementsEditOptions& options)
{
    auto list = m_storage.wordReplacements.get();
    const auto index = findReplacement(list, options.which);
    if (!index)
        return complain(index.error(), exitUsage);
    if (!options.original && !options.replacement && !options.isRegex && !options.timing)
        return complain("Say what to change: --original, --replacement, --regex, --plain or --timing.", exitUsage);
    auto& entry = list[*index];
    entry.original = options.original.value_or(entry.original);
    entry.replacement = options.replacement.value_or(entry.replacement);
    entry.isRegex = options.isRegex.value_or(entry.isRegex);
    entry.timing = options.timing.value_or(entry.timing);
    if (const auto checked = check(entry, *index); !checked)
        return complain(checked.error(), exitUsage);
    const auto changed = line(list, *index);
    warn(entry);
    return store(std::move(list), changed);
}

int ReplacementsCommand::run(const ReplacementsRemoveOptions& options)
{
    const auto list = m_storage.wordReplacements.get();
    std::set<std::size_t> indices;
    for (const auto& which : options.which) {
        const auto index = findReplacement(list, which);
        if (!index)
            return complain(index.error() + (options.which.size() > 1 ? "\nNothing was removed." : ""), exitUsage);
        indices.insert(*index);
    }
    std::vector<WordReplacement> rest;
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (!indices.contains(i))
            rest.push_back(list[i]);
    }
    auto removed = replacementsTable(list, {indices.begin(), indices.end()});
    removed.pop_back();
    return store(std::move(rest), "Removed:\n" + removed);
}

int ReplacementsCommand::run(const ReplacementsImportOptions& options)
{
    const auto text = textOf(options.file);
    if (!text)
        return complain("The file cannot be read: " + toString(text.error()) + ".", exitFailure);
    const auto read = readReplacements(*text, options.format ? options.format : formatOf(options.file));
    if (!read) {
        for (const auto& error : read.error())
            complain(toString(error), exitFailure);
        return complain("Nothing was changed.", exitFailure);
    }
    if (read->empty())
        return complain("There are no replacements in it. Nothing was changed.", exitFailure);
    const auto before = m_storage.wordReplacements.get();
    auto taken = merged(options.replace ? std::vector<WordReplacement>() : before, *read);
    for (const auto& entry : *read)
        warn(entry);
    const auto done =
        options.replace
            ? fmt::format("The list has {} entries now, in place of {}.", taken.list.size(), before.size())
            : fmt::format("Added: {}. Changed: {}. There already: {}.", taken.added, taken.changed, taken.unchanged);
    return store(std::move(taken.list), done);
}

int ReplacementsCommand::run(const ReplacementsExportOptions& options)
{
    const auto& file = options.file;
    const auto format = options.format ? options.format : formatOf(file);
    const auto text = writeReplacements(m_storage.wordReplacements.get(), format.value_or(ReplacementFormat::csv));
    if (file.empty() || file == "-")
        return print(text);
    std::error_code ignored;
    if (fs::exists(file, ignored) && !fs::is_regular_file(file, ignored))
        return complain(fmt::format("\"{}\" is not a file that can be replaced.", file.string()), exitUsage);
    if (fs::exists(file, ignored) && !options.force)
        return complain(fmt::format("\"{}\" exists. Add --force to replace it.", file.string()), exitUsage);
    if (const auto written = writeFileAtomically(file, text); !written)
        return complain("The list could not be exported: " + toString(written.error()) + ".", exitFailure);
    return exitSuccess;
}

Task<int> ReplacementsCommand::run(ReplacementsTestOptions options)
{
    auto text = options.text.value_or("-");
    if (text == "-") {
        auto read = textOf("-");
        if (!read)
            co_return complain("Standard input cannot be read: " + read.error().reason.message() + ".", exitFailure);
        text = *std::move(read);
        if (text.ends_with('\n')) // of the shell or an editor
            text.pop_back();
    }
    for (const auto timing : {Timing::beforeAI, Timing::afterAI}) {
        if (options.timing.value_or(timing) != timing && options.timing != Timing::both)
            continue;
        auto replaced = co_await applied(timing, std::move(text));
        text = std::move(replaced);
    }
    co_return print(text + '\n');
}

Task<std::string> ReplacementsCommand::applied(WordReplacementTiming timing, std::string text)
{
    auto list = m_service.replacements(timing);
    const auto result = co_await m_service.apply(std::move(list), std::move(text));
    const char* const when = timing == Timing::beforeAI ? "Before AI" : "After AI";
    for (const auto& [original, matches, problem] : result.notes)
        m_terminal.line(problem.empty()
                            ? fmt::format("{}: {} replaced {} {}", when, inQuotes(original), matches, times(matches))
                            : fmt::format("{}: {} skipped: {}", when, inQuotes(original), problem));
    co_return result.text;
}

Result<void, std::string> ReplacementsCommand::check(const WordReplacement& entry, std::size_t own) const
{
    const auto& list = m_storage.wordReplacements.get();
    if (!isText(entry.original) || !isText(entry.replacement))
        return failure(std::string("This is not text in UTF-8."));
    if (const auto why = whyUnusable(entry))
        return failure(fmt::format("{} cannot be used: {}.", inQuotes(entry.original), *why));
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (i != own && isSameRule(list[i], entry))
            return failure(
                fmt::format("There is such an entry already; \"vocalith replacements edit {}\" changes it:\n{}", i + 1,
                            line(list, i)));
    }
    return {};
}

void ReplacementsCommand::warn(const WordReplacement& entry)
{
    for (const auto& spelling : spellingsNeverFound(entry))
        m_terminal.line(
            m_terminal.coloured(Terminal::Colour::yellow, "Notice: ") +
            fmt::format("{} begins or ends with a sign, so it is not found as a word by itself. Use --regex "
                        "for it, with a backslash before each sign.",
                        inQuotes(spelling)));
}

int ReplacementsCommand::store(std::vector<WordReplacement> list, const std::string& done)
{
    m_storage.wordReplacements.set(std::move(list));
    if (const auto why = m_storage.whyNotStored())
        return complain("The change could not be saved: " + *why + ".", exitFailure);
    m_terminal.line(done);
    return exitSuccess;
}

int ReplacementsCommand::print(const std::string& text)
{
    if (writeToStandardOutput(text) == 0)
        return exitSuccess;
    return complain("Standard output could not be written.", exitFailure);
}

int ReplacementsCommand::complain(const std::string& text, int exitCode)
{
    m_terminal.line(m_terminal.coloured(Terminal::Colour::red, "Error: ") + text);
    return exitCode;
}

} // namespace vocalith
