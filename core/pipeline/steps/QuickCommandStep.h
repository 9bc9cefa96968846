#pragma once

#include "core/pipeline/TranscriptProcessingStep.h"

namespace vocalith {

class PersistentAppStorage;
class QuickCommandsManager;

/// Carries out a spoken command in place of inserting it, and then ends the run, also when the command failed: what was
/// said to the program is not meant for the text.
class QuickCommandStep final : public TranscriptProcessingStep {
public:
    QuickCommandStep(PersistentAppStorage& appStorage, QuickCommandsManager& commands)
        : m_appStorage(appStorage), m_commands(commands)
    {}

    std::string_view name() const override { return "QuickCommandStep"; }
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;

private:
    PersistentAppStorage& m_appStorage;
    QuickCommandsManager& m_commands;
};

} // namespace vocalith
