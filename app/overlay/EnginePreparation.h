#pragma once

#include "base/Log.h"
#include "base/Task.h"
#include "core/session/TranscriptionSessionManager.h"
#include "models/TranscriptionModelID.h"

#include <optional>

namespace vocalith {

class DictationMode;

/// The engine of the running dictation, made ready while the user speaks. Belongs to the coordination of dictations;
/// main thread. A preparation whose task is stopped has not failed.
class EnginePreparation {
public:
    EnginePreparation(TranscriptionSessionManager& sessionManager, const DictationMode& mode, Logger logger);

    /// A dictation begins: nothing is prepared for it.
    void begin();
    /// Takes the engine that the mode asks for, and prepares it.
    Task<void> prepare();
    /// It was asked for with the model that the mode names now.
    bool isForMode() const;
    /// Why there is no engine.
    const std::optional<SessionError>& failure() const { return m_failure; }

private:
    TranscriptionSessionManager& m_sessionManager;
    const DictationMode& m_mode;
    const Logger m_logger;

    std::optional<TranscriptionModelID> m_model; ///< whose engine was asked for last
    std::optional<SessionError> m_failure;
};

} // namespace vocalith
