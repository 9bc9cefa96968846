#include "core/speech/TranscriptionService.h"

namespace vocalith {

std::string userMessage(const TranscriptionError& error)
{
    using Kind = TranscriptionError::Kind;
    switch (error.kind) {
    case Kind::modelNotFound: return "Model not found: " + error.detail;
    case Kind::initializationFailed:
        return "Failed to initialize Whisper. Please check model file availability at: " + error.detail;
    case Kind::contextMissing: return "Whisper context not initialized.";
    case Kind::audioConversion:
        return error.detail.empty() ? "Audio conversion failed." : "Audio conversion failed. " + error.detail;
    case Kind::decodeFailed: return "Whisper error code " + error.detail;
    case Kind::noSpeech: return "No speech detected";
    case Kind::languageUnknown: return "The model does not know the language \"" + error.detail + "\". Choose another.";
    case Kind::modelDamaged:
    case Kind::failed:
    case Kind::unavailable: return error.detail;
    case Kind::cancelled: return "Cancelled";
    }
    return {};
}

void TranscriptionService::announceLoading(bool isLoading)
{
    TranscriptionState state;
    state.isLoading = isLoading;
    m_textEvents.emit(state);
}

void TranscriptionService::announceFinal(const TranscriptionData& transcript)
{
    TranscriptionState state;
    state.final = plainText(transcript);
    m_textEvents.emit(state);
}

} // namespace vocalith
