#pragma once

#include "base/Log.h"
#include "core/pipeline/TranscriptProcessingStep.h"

namespace vocalith {

class PersistentAppStorage;
class TextTypingService;

/// Leaves a copy of the text on the clipboard when the user wants it. Without a desktop (null) it passes the text on;
/// a failed copy never stops the run.
class AutoCopyToClipboardStep final : public TranscriptProcessingStep {
public:
    AutoCopyToClipboardStep(PersistentAppStorage& appStorage, TextTypingService* typing, Logger logger)
        : m_appStorage(appStorage), m_typing(typing), m_logger(std::move(logger))
    {}

    std::string_view name() const override { return "AutoCopyToClipboardStep"; }
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;

private:
    PersistentAppStorage& m_appStorage;
    TextTypingService* const m_typing;
    const Logger m_logger;
};

} // namespace vocalith
