#pragma once

#include "core/pipeline/scripts/BashScriptService.h"
#include "core/pipeline/steps/BashScriptStep.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/RecordedNotices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>

namespace vocalith::test {

/// Real scripts in the real shell, under a clock that the test moves.
class ScriptFixture : public testing::Test {
protected:
    ScriptFixture() { std::signal(SIGPIPE, SIG_IGN); } // as the program does

    /// The scripts and the prompt of the next run of a step.
    void use(const std::string& beforeScript, const std::string& afterScript = {})
    {
        AIPrompt prompt;
        prompt.name = "Tidy";
        prompt.preAIPromptScript = beforeScript;
        prompt.postAIPromptScript = afterScript;
        context.activationMode = prompt;
        context.diagnostics.clear();
        context.endReason.clear();
    }

    FakeClock clock;
    TemporaryFolder folder;
    RecordedLog log;
    RecordedNotices notices;
    PersistentAppStorage storage{folder / "settings.json", clock, Logger()};
    BashScriptService service{clock, storage, log.logger()};
    BashScriptStep before{BashScriptStep::Stage::before, service, notices, log.logger()};
    BashScriptStep after{BashScriptStep::Stage::after, service, notices, log.logger()};
    TranscriptProcessingContext context;
};

} // namespace vocalith::test
