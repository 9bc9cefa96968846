#include "app/cli/history/HistoryCommandLine.h"

#include "app/cli/history/text/HistoryDates.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <map>
#include <utility>

namespace vocalith {
namespace {

using Kind = HistorySelection::Kind;

constexpr const char* kIdentifiers =
    "\nAn entry is named by the first characters of its identifier, at least four, or by the word last.";
constexpr std::size_t kMostEntries = 10'000;

/// What is typed, before it is looked into.
struct ExportTexts {
    std::string since;
    std::string until;
    std::string format;
};

void addKind(CLI::App& command, HistorySelection& selection)
{
    const auto setKind = [&selection](const std::string& name) {
        static const std::map<std::string, Kind> kKinds = {
            {"dictation", Kind::dictation}, {"files", Kind::files}, {"journal", Kind::journal}};
        const auto kind = kKinds.find(name);
        if (kind == kKinds.end())
            throw CLI::ValidationError("--only", "There is no kind \"" + name + "\": use dictation, files or journal.");
        selection.kind = kind->second;
    };
    auto* only = command
                     .add_option_function<std::string>("--only", setKind,
                                                       "Only entries of this kind: dictation, files or journal")
                     ->type_name("KIND");
    command.add_option("--prompt", selection.prompt, "Only entries made with this prompt")
        ->type_name("NAME-OR-ID")
        ->excludes(only);
}

void addListOptions(CLI::App& command, HistoryListOptions& options)
{
    command.add_option("--limit", options.limit, "How many entries to show")
        ->type_name("N")
        ->check(CLI::Range(std::size_t{1}, kMostEntries).description(""))
        ->capture_default_str();
    command.add_option("--before", options.before, "Go on behind this entry: the last one of the page before")
        ->type_name("ID");
    command.add_flag("--oldest-first", options.oldestFirst, "Begin with the oldest entry");
    addKind(command, options.selection);
    command.add_flag("--json", options.json, "Print a JSON array of the entries as they are stored");
    command.footer("\nFiles that cannot be read are named on standard error, with --json too.");
}

CLI::App* addIdCommand(CLI::App& history, const char* name, const char* description, std::string& id)
{
    auto* command = history.add_subcommand(name, description);
    command->add_option("id", id, "The entry, or last")->required()->type_name("ID");
    command->footer(kIdentifiers);
    return command;
}

CLI::App* addDelete(CLI::App& history, HistoryDeleteOptions& options)
{
    auto* command = history.add_subcommand("delete", "Delete entries, and recordings that no other entry uses");
    auto* ids = command->add_option("ids", options.ids, "The entries")->type_name("ID");
    command->add_flag("--all", options.all, "The whole history")->excludes(ids);
    command->add_flag("-y,--yes", options.yes, "Do not ask");
    command->footer(kIdentifiers);
    return command;
}

CLI::App* addExport(CLI::App& history, HistoryExportOptions& options, ExportTexts& texts)
{
    auto* command = history.add_subcommand("export", "Write transcripts of entries to files");
    auto* ids = command->add_option("ids", options.ids, "The entries; without any, all that the options let through")
                    ->type_name("ID");
    addKind(*command, options.selection);
    command->get_option("--only")->excludes(ids);
    command->get_option("--prompt")->excludes(ids);
    command->add_option("--search", options.selection.query, "Only entries with this text")
        ->type_name("TEXT")
        ->excludes(ids);
    command->add_option("--since", texts.since, "Only entries of this day and later ones, e.g. 2026-01-31")
        ->type_name("DATE")
        ->excludes(ids);
    command->add_option("--until", texts.until, "Only entries up to the end of this day")
        ->type_name("DATE")
        ->excludes(ids);
    command->add_option("-f,--format", texts.format, "Form of the files")->type_name("FORMAT");
    command->add_option("-o,--output", options.output, "File, or folder for several, to write to")->type_name("PATH");
    command->add_flag("--force", options.force, "Replace files that exist");
    command->footer(std::string(kIdentifiers) +
                    "\nFormats: txt, srt, vtt, md, json, fcpxml (fcpxml:29.97 for another frame rate) hold what was "
                    "recognised;\nentry is the whole entry as it is stored. Without --format the name of the output "
                    "decides, else plain text.");
    return command;
}

Result<std::optional<HistoryExportOptions::Format>, std::string> exportFormatNamed(const std::string& name)
{
    if (name.empty())
        return std::nullopt;
    if (name == "entry")
        return HistoryExportOptions::EntryFormat{};
    if (const auto format = exportFormat(name))
        return *format;
    return failure("There is no format \"" + name +
                   "\". Use txt, srt, vtt, md, json, fcpxml (optionally with a frame rate as in fcpxml:29.97) or "
                   "entry.");
}

Result<HistoryOptions, std::string> checked(HistoryExportOptions options, const ExportTexts& texts)
{
    const auto format = exportFormatNamed(texts.format);
    if (!format)
        return failure(format.error());
    options.format = *format;
    if (!texts.since.empty()) {
        const auto period = periodNamed(texts.since);
        if (!period)
            return failure(period.error());
        options.since = period->begin;
    }
    if (!texts.until.empty()) {
        const auto period = periodNamed(texts.until);
        if (!period)
            return failure(period.error());
        options.until = period->end;
    }
    return HistoryOptions(std::move(options));
}

Result<HistoryOptions, std::string> checked(const HistoryDeleteOptions& options)
{
    if (options.ids.empty() && !options.all)
        return failure(std::string("Name the entries to delete, or say --all."));
    return HistoryOptions(options);
}

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const auto& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

} // namespace

struct HistoryCommandLine::Private {
    CLI::App* history = nullptr;
    HistoryListOptions listed;
    HistoryListOptions found;
    std::vector<std::string> words;
    HistoryShowOptions shown;
    HistoryPlayOptions played;
    HistoryCopyOptions copied;
    HistoryRetryOptions retried;
    HistoryDeleteOptions deleted;
    HistoryExportOptions exported;
    ExportTexts exportTexts;
    HistoryCleanupOptions cleanup;

    /// Each command of the history, with what it makes of its options.
    std::vector<std::pair<CLI::App*, std::function<Result<HistoryOptions, std::string>()>>> commands;
};

HistoryCommandLine::HistoryCommandLine(CLI::App& app) : d(std::make_unique<Private>())
{
    d->history = app.add_subcommand("history", "What was dictated and transcribed before");
    auto& history = *d->history;
    history.require_subcommand(0, 1);
    history.footer(kIdentifiers);
    const auto add = [this](CLI::App* command, auto options) {
        d->commands.emplace_back(command, [options]() -> Result<HistoryOptions, std::string> { return options(); });
    };

    auto* list = history.add_subcommand("list", "List the entries, the newest first");
    addListOptions(*list, d->listed);
    add(list, [this] { return d->listed; });
    auto* search = history.add_subcommand("search", "List the entries with a text, whatever its case and accents");
    search->add_option("query", d->words, "Text of the transcript, the final text, the prompt's name or the error")
        ->required()
        ->type_name("QUERY");
    addListOptions(*search, d->found);
    add(search, [this] {
        auto options = d->found;
        options.selection.query = joined(d->words);
        return options;
    });
    auto* show = addIdCommand(history, "show", "Show all about one entry", d->shown.id);
    show->add_flag("--json", d->shown.json, "Print the entry as it is stored");
    add(show, [this] { return d->shown; });
    add(addIdCommand(history, "play", "Play the recording of an entry", d->played.id), [this] { return d->played; });
    add(addIdCommand(history, "copy", "Copy the text of an entry to the clipboard", d->copied.id),
        [this] { return d->copied; });
    auto* retry = addIdCommand(history, "retry", "Transcribe the recording of an entry again", d->retried.id);
    auto& recognition = d->retried.recognition;
    retry->add_option("-m,--model", recognition.model, "Voice model (see: vocalith models list)")->type_name("ID");
    retry->add_option("-l,--language", recognition.language, "Spoken language, e.g. en, de, french; auto to detect it")
        ->type_name("LANG");
    add(retry, [this] { return d->retried; });
    add(addDelete(history, d->deleted), [this] { return checked(d->deleted); });
    add(addExport(history, d->exported, d->exportTexts), [this] { return checked(d->exported, d->exportTexts); });
    auto* cleanup = history.add_subcommand("cleanup", "Delete what is older than the setting allows");
    cleanup->add_flag("--dry-run", d->cleanup.dryRun, "Only say how much that would be");
    add(cleanup, [this] { return d->cleanup; });
}

HistoryCommandLine::~HistoryCommandLine() = default;

bool HistoryCommandLine::isParsed() const
{
    return d->history->parsed();
}

const RecognitionOptions& HistoryCommandLine::recognition() const
{
    return d->retried.recognition;
}

Result<HistoryOptions, std::string> HistoryCommandLine::options() const
{
    for (const auto& [command, options] : d->commands) {
        if (command->parsed())
            return options();
    }
    return failure(std::string("Say what to do with the history: vocalith history --help lists the commands."));
}

} // namespace vocalith
