#include "app/overlay/UndeliveredText.h"

#include "core/pipeline/TranscriptProcessingContext.h"
#include "ports/Pasteboard.h"

#include <QtGlobal>

namespace vocalith {

void UndeliveredText::take(const TranscriptProcessingContext& context)
{
    if (!context.destination)
        m_text = context.transcript;
}

Task<dictation_outcome::Failed> UndeliveredText::rescue(dictation_outcome::Failed failed)
{
    failed.text = m_text;
    if (!m_pasteboard || m_text.empty() || failed.historyHasText)
        co_return failed;
    const auto written = co_await m_pasteboard->writeText(m_text, false);
    if (written)
        failed.detail = QT_TRANSLATE_NOOP("Vocalith", "Your words are on the clipboard.");
    else
        m_logger.error("Could not copy the text to the clipboard: " + userMessage(written.error()));
    co_return failed;
}

} // namespace vocalith
