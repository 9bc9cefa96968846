#include "app/cli/ExitCode.h"
#include "app/cli/history/commands/HistoryLookup.h"
#include "app/cli/history/commands/HistorySubcommands.h"
#include "app/cli/history/text/HistoryText.h"
#include "ports/ClipboardWriter.h"

namespace vocalith {
namespace {

constexpr std::size_t kQuotedColumns = 50;

} // namespace

Task<int> runHistory(HistoryShowOptions options, const HistoryServices& services)
{
    const auto& output = services.output;
    const auto entry = co_await findEntry(options.id, services);
    if (!entry)
        co_return report(entry.error(), output);
    co_return options.json ? output.print(storedForm(*entry)) : output.show(historyDetails(*entry, output));
}

Task<int> runHistory(HistoryCopyOptions options, const HistoryServices& services)
{
    const auto& output = services.output;
    const auto entry = co_await findEntry(options.id, services);
    if (!entry)
        co_return report(entry.error(), output);
    const auto text = finalText(*entry);
    if (text.empty())
        co_return output.complain("The entry " + shortID(entry->id) + " has no text.");
    const auto copied = co_await services.clipboard.write(text);
    if (copied) {
        output.note("Copied: " + firstWords(text, kQuotedColumns));
        co_return static_cast<int>(exitSuccess);
    }
    if (copied.error().kind == ClipboardError::Kind::cancelled)
        co_return static_cast<int>(exitCancelled);
    output.complain(userMessage(copied.error()));
    output.print(text + '\n');
    co_return static_cast<int>(exitFailure);
}

} // namespace vocalith
