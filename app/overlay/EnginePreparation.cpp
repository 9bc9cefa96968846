#include "app/overlay/EnginePreparation.h"

#include "app/overlay/DictationMode.h"

namespace vocalith {

EnginePreparation::EnginePreparation(TranscriptionSessionManager& sessionManager, const DictationMode& mode,
                                     Logger logger)
    : m_sessionManager(sessionManager), m_mode(mode), m_logger(std::move(logger))
{}

void EnginePreparation::begin()
{
    m_model.reset();
    m_failure.reset();
}

Task<void> EnginePreparation::prepare()
{
    m_model = m_mode.model();
    m_failure.reset();
    m_logger.info((m_mode.hasOwnModel() ? "Starting transcription with the prompt's model: "
                                        : "Starting transcription with default model: ") +
                  toString(*m_model));

    const auto engine = m_sessionManager.setEngine(*m_model, TranscriptionSource::dictation);
    if (!engine) {
        m_failure = SessionError{SessionError::Kind::engine, engine.error()};
    } else {
        const auto started = co_await m_sessionManager.start();
        if (!started && started.error().kind != SessionError::Kind::cancelled)
            m_failure = started.error();
    }
}

bool EnginePreparation::isForMode() const
{
    return m_model == m_mode.model();
}

} // namespace vocalith
