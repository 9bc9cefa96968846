#include "app/cli/models/BetterModelHint.h"

#include "app/cli/terminal/Terminal.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <algorithm>

namespace vocalith {
namespace {

constexpr const char* kHintID = "cli.betterModelHint";

} // namespace

void hintAtBetterModels(const TranscriptionModelID& used, PersistentAppStorage& appStorage, Terminal& terminal)
{
    auto shown = appStorage.shownNotificationIDs.get();
    const bool wasShown = std::find(shown.begin(), shown.end(), kHintID) != shown.end();
    if (wasShown || used != TranscriptionModelID(std::string(kSpeechTranscriberID)))
        return;
    terminal.line(terminal.coloured(
        Terminal::Colour::dim, "This text comes from the system's own recogniser: English only, without "
                               "punctuation. It serves until a better\nmodel is there; \"vocalith doctor\" says how "
                               "to get one. (This is said once.)"));
    shown.emplace_back(kHintID);
    appStorage.shownNotificationIDs.set(std::move(shown));
}

} // namespace vocalith
