#pragma once

#include "core/pipeline/TranscriptProcessingStep.h"

namespace vocalith {

class HistoryService;

/// Keeps the dictation, as it stands at this point of the run, under the session's identifier: first as recognised, so
/// that nothing after it can lose the words, then with the AI rewrite, and at last as delivered. Where nothing has
/// changed since the last time, nothing is written. A failed write never stops the run.
class HistoryStep final : public TranscriptProcessingStep {
public:
    /// Without a history (null) the step passes the text on.
    explicit HistoryStep(HistoryService* history) : m_history(history) {}

    std::string_view name() const override { return "HistoryStep"; }
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;

private:
    HistoryService* const m_history;
};

} // namespace vocalith
