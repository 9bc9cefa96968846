#include "ports/SpeechRecognizer.h"

namespace vocalith {

std::string userMessage(const SpeechRecognizerError& error)
{
    using Kind = SpeechRecognizerError::Kind;
    switch (error.kind) {
    case Kind::modelMissing:
        return "The system's speech recogniser has no model (" + error.detail +
               "). Install the package pocketsphinx-en-us, or choose another model.";
    case Kind::languageUnsupported:
        return "The system's speech recogniser does not know the language \"" + error.detail +
               "\". Choose a whisper model for it.";
    case Kind::failed: return "The system's speech recogniser failed: " + error.detail;
    case Kind::cancelled: return "Cancelled";
    }
    return {};
}

} // namespace vocalith
