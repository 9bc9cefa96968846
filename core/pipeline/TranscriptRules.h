#pragma once

#include "core/pipeline/commands/QuickCommandsManager.h"
#include "core/pipeline/replacements/WordReplacementService.h"
#include "core/pipeline/scripts/BashScriptService.h"

namespace vocalith {

/// What the user has set up to be done with a text: the services behind the steps that do it. Lives as long as the
/// program; main thread.
class TranscriptRules {
public:
    struct Services {
        PersistentAppStorage& appStorage;
        Analytics& analytics;
        AppLauncher& appLauncher;
        Automations& automations;
        Notices& notices;
        Clock& clock;
    };

    TranscriptRules(const Services& services, const LogService& log)
        : quickCommands({services.appStorage, services.analytics, services.appLauncher, services.automations,
                         services.notices, services.clock},
                        log),
          replacements(services.appStorage, services.notices, log.logger("WordReplacementService")),
          scripts(services.clock, services.appStorage, log.logger("BashScriptService"))
    {}

    QuickCommandsManager quickCommands;
    WordReplacementService replacements;
    BashScriptService scripts;
};

} // namespace vocalith
