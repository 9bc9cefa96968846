#pragma once

#include "base/Log.h"
#include "core/speech/whisper/WhisperCPPDependencyProtocol.h"

#include <atomic>
#include <map>

namespace vocalith {

/// What a decode needs a loaded model for: another one in any part takes the place of the loaded one.
struct WhisperSelection {
    std::filesystem::path modelFile;
    TranscriptionModelID modelId;
    TranscriptionSource source = TranscriptionSource::dictation;
    WhisperSettings settings;

    bool operator==(const WhisperSelection&) const = default;
};

/// The one model that the whisper service keeps loaded, verified before the library sees it. Lives on the service's
/// worker thread, but for `isLoaded`, which any thread may ask.
class WarmWhisperModel {
public:
    WarmWhisperModel(WhisperCPPFactory& whisperCPPType, Logger logger);

    /// The wrapper for `selection`: the loaded one, or a new one in its place. It stays until the next call.
    Result<WhisperCPPDependencyProtocol*, TranscriptionError> load(const WhisperSelection& selection);
    void release();
    bool isLoaded() const { return m_isLoaded; }

private:
    /// A file as it was at one time; another one under the same name has another stamp.
    struct Stamp {
        std::uintmax_t size = 0;
        std::filesystem::file_time_type modified;
        bool operator==(const Stamp&) const = default;
    };

    static Stamp stampOf(const std::filesystem::path& file);
    Result<void, TranscriptionError> verify(const std::filesystem::path& file, const Stamp& stamp);

    WhisperCPPFactory& m_whisperCPPType;
    Logger m_logger;
    std::map<std::filesystem::path, Stamp> m_verified;
    WhisperSelection m_selection;
    Stamp m_stamp;
    std::unique_ptr<WhisperCPPDependencyProtocol> m_whisperCPP;
    std::atomic<bool> m_isLoaded = false;
};

} // namespace vocalith
