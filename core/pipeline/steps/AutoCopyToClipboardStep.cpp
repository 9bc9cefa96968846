#include "core/pipeline/steps/AutoCopyToClipboardStep.h"

#include "core/storage/settings/PersistentAppStorage.h"
#include "ports/Pasteboard.h"

namespace vocalith {

Task<Result<bool, StepFailure>> AutoCopyToClipboardStep::run(TranscriptProcessingContext& context)
{
    if (!m_pasteboard || !m_appStorage.autoCopyToClipboard.get() || context.transcript.empty())
        co_return false;
    const auto written = co_await m_pasteboard->writeText(context.transcript, false);
    if (!written && written.error().kind != PasteboardError::Kind::cancelled)
        m_logger.error("Could not copy the text to the clipboard: " + userMessage(written.error()));
    co_return false;
}

} // namespace vocalith
