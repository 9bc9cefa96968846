#pragma once

#include "base/Log.h"
#include "base/Task.h"
#include "core/session/DictationOutcome.h"

#include <string>

namespace vocalith {

class Pasteboard;
struct TranscriptProcessingContext;

/// The words of a dictation that somebody has ended before they were delivered. Belongs to the coordination of
/// dictations; main thread.
class UndeliveredText {
public:
    /// Without a pasteboard nothing can be rescued.
    UndeliveredText(Pasteboard* pasteboard, Logger logger) : m_pasteboard(pasteboard), m_logger(std::move(logger)) {}

    void forget() { m_text.clear(); }
    /// The run over them was ended here; what it has delivered all the same is of no interest.
    void take(const TranscriptProcessingContext& context);
    /// Puts words that the history does not have on the clipboard; the failure then says so.
    Task<dictation_outcome::Failed> rescue(dictation_outcome::Failed failed);

private:
    Pasteboard* const m_pasteboard;
    const Logger m_logger;
    std::string m_text;
};

} // namespace vocalith
