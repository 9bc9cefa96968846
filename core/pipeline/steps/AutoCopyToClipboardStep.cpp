#include "core/pipeline/steps/AutoCopyToClipboardStep.h"

#include "core/output/typing/TextTypingService.h"
#include "core/storage/settings/PersistentAppStorage.h"

namespace vocalith {

Task<Result<bool, StepFailure>> AutoCopyToClipboardStep::run(TranscriptProcessingContext& context)
{
    if (!m_typing || !m_appStorage.autoCopyToClipboard.get() || context.transcript.empty())
        co_return false;
    const auto written = co_await m_typing->copy(context.transcript);
    if (!written && written.error().kind != PasteboardError::Kind::cancelled)
        m_logger.error("Could not copy the text to the clipboard: " + userMessage(written.error()));
    co_return false;
}

} // namespace vocalith
