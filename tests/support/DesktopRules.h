#pragma once

#include "core/pipeline/TranscriptRules.h"
#include "tests/support/FakeAnalytics.h"
#include "tests/support/FakeAppLauncher.h"
#include "tests/support/FakeAutomations.h"

namespace vocalith::test {

/// The user's rules with a desktop that only notes what is asked of it.
struct DesktopRules {
    DesktopRules(PersistentAppStorage& appStorage, Notices& notices, Clock& clock, const LogService& log)
        : rules({appStorage, analytics, launcher, automations, notices, clock}, log)
    {}

    FakeAnalytics analytics;
    FakeAppLauncher launcher;
    FakeAutomations automations;
    TranscriptRules rules;
};

} // namespace vocalith::test
