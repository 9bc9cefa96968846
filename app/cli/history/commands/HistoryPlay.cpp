#include "app/cli/ExitCode.h"
#include "app/cli/history/commands/HistoryLookup.h"
#include "app/cli/history/commands/HistorySubcommands.h"
#include "app/cli/history/text/HistoryDates.h"
#include "app/cli/history/text/HistoryText.h"
#include "ports/AudioPlayer.h"

#include <system_error>

namespace vocalith {

Task<int> runHistory(HistoryPlayOptions options, const HistoryServices& services)
{
    const auto& output = services.output;
    const auto entry = co_await findEntry(options.id, services);
    if (!entry)
        co_return report(entry.error(), output);
    const auto recording = recordingOf(*entry);
    if (!recording)
        co_return output.complain("The recording of this entry is not on this machine.");
    std::error_code error;
    if (!std::filesystem::exists(*recording, error))
        co_return output.complain("The recording of this entry is not there any more: \"" + recording->string() + "\"");
    const auto whole = durationText(audioFile(*entry).duration);
    auto showPosition = [&terminal = output.terminal(), whole](double seconds) {
        terminal.status("Playing " + durationText(seconds) + " of " + whole + "   Ctrl-C stops");
    };
    const auto played = co_await services.player.play(*recording, std::move(showPosition));
    output.terminal().clearStatus();
    if (played)
        co_return static_cast<int>(exitSuccess);
    if (played.error().kind == AudioPlayerError::Kind::cancelled)
        co_return static_cast<int>(exitCancelled);
    co_return output.complain(userMessage(played.error()));
}

} // namespace vocalith
