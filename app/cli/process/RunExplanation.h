#pragma once

#include "base/JsonFields.h"
#include "core/pipeline/TranscriptProcessingService.h"

#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// One step of a run as `vocalith process --json` prints it.
struct ExplainedStep {
    std::string step;
    bool changed = false;
    std::string before;
    std::string after;
    std::vector<DiagnosticRecord> notes;
    bool endedTheRun = false;
    std::optional<std::string> failure;
};

/// A whole run, in the same way.
struct ExplainedRun {
    std::optional<std::string> text; ///< what was delivered; absent when nothing was
    PipelineOutcome::End end = PipelineOutcome::End::complete;
    bool failed = false;               ///< a step, or what the run ended for
    std::optional<std::string> reason; ///< why it ended before its last step
    std::vector<ExplainedStep> steps;
};

constexpr auto jsonFields(JsonType<DiagnosticRecord>)
{
    return fields(field("label", &DiagnosticRecord::label), field("text", &DiagnosticRecord::text));
}

constexpr auto jsonFields(JsonType<ExplainedStep>)
{
    return fields(field("step", &ExplainedStep::step), field("changed", &ExplainedStep::changed),
                  field("before", &ExplainedStep::before), field("after", &ExplainedStep::after),
                  field("notes", &ExplainedStep::notes), field("endedTheRun", &ExplainedStep::endedTheRun),
                  field("failure", &ExplainedStep::failure));
}

constexpr auto jsonFields(JsonType<ExplainedRun>)
{
    return fields(field("text", &ExplainedRun::text), field("end", &ExplainedRun::end),
                  field("failed", &ExplainedRun::failed), field("reason", &ExplainedRun::reason),
                  field("steps", &ExplainedRun::steps));
}

ExplainedStep explained(const StepReport& report);

/// For people: a line that says whether the step changed the text, and lines with what it was, became, and noted. Texts
/// are quoted as JSON quotes them, so that spaces and line breaks are seen, and long ones are cut.
std::string explanation(const StepReport& report);

} // namespace vocalith
