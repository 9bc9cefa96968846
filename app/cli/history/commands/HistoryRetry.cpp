#include "app/cli/ExitCode.h"
#include "app/cli/history/commands/HistoryLookup.h"
#include "app/cli/history/commands/HistorySubcommands.h"
#include "app/cli/history/text/HistoryText.h"
#include "app/cli/recognition/RecognitionChoice.h"
#include "core/session/HistoryEntryActionsService.h"

#include <fmt/format.h>

namespace vocalith {
namespace {

using Kind = HistoryActionError::Kind;

/// The words go where they would have gone, for there they can be saved.
int reportUnkept(const HistoryActionError& error, const HistoryOutput& output)
{
    output.complain(userMessage(error));
    output.note("The new text is kept nowhere but here:");
    output.print(error.text + '\n');
    return exitFailure;
}

int reportFailure(const HistoryActionError& error, const HistoryOutput& output)
{
    if (error.kind == Kind::cancelled)
        return exitCancelled;
    if (!error.text.empty())
        return reportUnkept(error, output);
    if (error.kind != Kind::recognition || error.recognition.kind != SessionError::Kind::engine) {
        output.complain(userMessage(error));
        const bool noSpeech = error.kind == Kind::recognition && error.recognition.kind == SessionError::Kind::noSpeech;
        return noSpeech ? exitNoSpeech : exitFailure;
    }
    return output.complain(explained(error.recognition.cause));
}

} // namespace

Task<int> runHistory(HistoryRetryOptions options, const HistoryServices& services)
{
    const auto& output = services.output;
    const auto entry = co_await findEntry(options.id, services);
    if (!entry)
        co_return report(entry.error(), output);
    auto showProgress = [&terminal = output.terminal()](double progress) {
        terminal.status(fmt::format("Transcribing … {:.0f} %", progress * 100));
    };
    auto model = services.chooseModel(options.recognition);
    const auto id = entry->id;
    const auto retried = co_await services.actions.retryTranscription(id, std::move(model), std::move(showProgress));
    output.terminal().clearStatus();
    if (!retried)
        co_return reportFailure(retried.error(), output);
    if (retried->id != id)
        output.note("The entry keeps the text that it had; this one is entry " + shortID(retried->id) + ".");
    co_return output.print(finalText(*retried) + '\n');
}

} // namespace vocalith
