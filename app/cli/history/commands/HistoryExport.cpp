#include "app/cli/ExitCode.h"
#include "app/cli/history/commands/HistoryLookup.h"
#include "app/cli/history/commands/HistorySubcommands.h"
#include "app/cli/history/text/HistoryDates.h"
#include "app/cli/history/text/HistoryText.h"
#include "base/AtomicFile.h"
#include "core/storage/history/HistoryService.h"

#include <fmt/format.h>

#include <set>
#include <system_error>

#include <unistd.h>

namespace vocalith {
namespace {

namespace fs = std::filesystem;
using Options = HistoryExportOptions;
using Complaint = HistoryComplaint;

/// Writes entries where and as the options say, and keeps count.
class Exporter {
public:
    Exporter(const Options& options, const HistoryOutput& output);

    /// Whether the options make sense together, and the output can be written to.
    Result<void, Complaint> check() const;
    /// Exports one entry. An error ends the export: the next one would fare no better.
    Result<void, Complaint> write(const HistoryEntry& entry);
    /// Says how it went; yields the exit code.
    int summarize() const;

private:
    Options::Format format() const;
    std::string extension() const;
    fs::path destination(const HistoryEntry& entry) const;
    void leaveOut(const std::string& reason);

    const Options& m_options;
    const HistoryOutput& m_output;
    const bool m_toStandardOutput;
    const bool m_toFolder;
    std::size_t m_written = 0;
    std::size_t m_leftOut = 0;
};

bool isFolder(const fs::path& path)
{
    std::error_code error;
    return fs::is_directory(path, error);
}

Exporter::Exporter(const Options& options, const HistoryOutput& output)
    : m_options(options), m_output(output), m_toStandardOutput(options.output.empty() || options.output == "-"),
      m_toFolder(!m_toStandardOutput && isFolder(options.output))
{}

Result<void, Complaint> Exporter::check() const
{
    const bool isOne = m_options.ids.size() == 1;
    if (!isOne && m_toStandardOutput)
        return failure(Complaint{exitUsage, "Several entries need a folder to be written to. Name one with --output."});
    if (!isOne && !m_toFolder)
        return failure(Complaint{exitUsage, "With several entries --output must be a folder that exists: make \"" +
                                                m_options.output.string() + "\" first, or name another."});
    if (m_toStandardOutput)
        return {};
    const auto folder = m_toFolder ? m_options.output : fs::absolute(m_options.output).parent_path();
    if (!isFolder(folder) || ::access(folder.c_str(), W_OK) != 0)
        return failure(Complaint{exitUsage, "Nothing can be written in the folder \"" + folder.string() +
                                                "\". Make it first, or choose another --output."});
    return {};
}

Options::Format Exporter::format() const
{
    if (m_options.format)
        return *m_options.format;
    const auto name = m_toFolder ? std::string() : m_options.output.extension().string();
    const auto byName = name.empty() ? std::nullopt : exportFormat(name.substr(1));
    return byName.value_or(PlainTextFormat{});
}

std::string Exporter::extension() const
{
    const auto chosen = format();
    const auto* transcriptFormat = std::get_if<ExportFormat>(&chosen);
    return transcriptFormat ? std::string(fileExtension(*transcriptFormat)) : "json";
}

fs::path Exporter::destination(const HistoryEntry& entry) const
{
    if (!m_toFolder)
        return m_options.output;
    return m_options.output / (localTimestamp(entry.creationDate) + "-" + shortID(entry.id) + "." + extension());
}

void Exporter::leaveOut(const std::string& reason)
{
    ++m_leftOut;
    m_output.complain(reason);
}

Result<void, Complaint> Exporter::write(const HistoryEntry& entry)
{
    const auto chosen = format();
    const auto* transcriptFormat = std::get_if<ExportFormat>(&chosen);
    const auto* recognised = transcript(entry);
    if (transcriptFormat && !recognised) {
        leaveOut("The entry " + shortID(entry.id) + " has no transcript and was left out.");
        return {};
    }
    std::string text =
        transcriptFormat ? exportTranscript(*recognised, *transcriptFormat, entry.creationDate) : storedForm(entry);
    if (!text.ends_with('\n'))
        text += '\n';
    if (m_toStandardOutput) {
        const int code = m_output.print(text);
        return code == exitSuccess ? Result<void, Complaint>() : failure(Complaint{code, {}});
    }
    const auto target = destination(entry);
    std::error_code error;
    if (fs::exists(target, error) && !m_options.force) {
        leaveOut("\"" + target.string() + "\" exists. Choose another --output, or replace it with --force.");
        return {};
    }
    const auto written = writeFileAtomically(target, text, Flush::later);
    if (!written)
        return failure(Complaint{exitFailure, "\"" + target.string() + "\" could not be written: " +
                                                  written.error().reason.message() + "."});
    ++m_written;
    m_output.terminal().status(fmt::format("Exporting … {}", m_written));
    return {};
}

int Exporter::summarize() const
{
    m_output.terminal().clearStatus();
    if (m_toFolder)
        m_output.note(fmt::format("Exported {} {} to \"{}\".", m_written, m_written == 1 ? "entry" : "entries",
                                  m_options.output.string()));
    return m_leftOut == 0 ? exitSuccess : exitFailure;
}

Task<Result<void, Complaint>> exportNamed(std::vector<std::string> names, Exporter& exporter,
                                          const HistoryServices& services)
{
    std::set<Uuid> ids; // all are looked for before the first one is written
    for (const auto& name : names) {
        const auto entry = co_await findEntry(name, services);
        if (!entry)
            co_return failure(entry.error());
        ids.insert(entry->id);
    }
    for (const auto& id : ids) {
        const auto entry = co_await services.history.entry(id);
        if (!entry)
            co_return failure(complaintOf(entry.error()));
        const auto written = exporter.write(*entry);
        if (!written)
            co_return failure(written.error());
    }
    co_return Result<void, Complaint>();
}

/// Page by page, the newest first.
Task<Result<void, Complaint>> exportSelected(Options options, Exporter& exporter, const HistoryServices& services)
{
    const auto refreshed = co_await refreshHistory(services);
    if (!refreshed)
        co_return failure(refreshed.error());
    auto filter = co_await filterFor(options.selection, HistorySortOrder::newestFirst, services);
    if (!filter)
        co_return failure(filter.error());
    HistoryPageRequest request;
    request.filter = *std::move(filter);
    if (options.until)
        request.after = HistoryStore::cursorAt(*options.until);
    do {
        const auto page = co_await services.history.store()->page(request);
        if (!page)
            co_return failure(complaintOf(page.error()));
        request.after = page->next;
        for (const auto& entry : page->entries) {
            if (options.since && entry.creationDate < *options.since)
                co_return Result<void, Complaint>();
            const auto written = exporter.write(entry);
            if (!written)
                co_return failure(written.error());
        }
    } while (request.after);
    co_return Result<void, Complaint>();
}

} // namespace

Task<int> runHistory(HistoryExportOptions options, const HistoryServices& services)
{
    Exporter exporter(options, services.output);
    const auto checked = exporter.check();
    if (!checked)
        co_return report(checked.error(), services.output);
    auto work = options.ids.empty() ? exportSelected(options, exporter, services)
                                    : exportNamed(options.ids, exporter, services);
    const auto done = co_await work;
    const int code = exporter.summarize();
    co_return done ? code : report(done.error(), services.output);
}

} // namespace vocalith
