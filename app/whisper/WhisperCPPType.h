#pragma once

#include "base/Log.h"
#include "core/speech/whisper/WhisperCPPDependencyProtocol.h"

namespace vocalith {

/// Makes `WhisperCPP` objects and, while it lives, leads what the library prints into the log. The library has one such
/// destination per process, so the composition makes one of these; it outlives all that it has made.
class WhisperCPPType final : public WhisperCPPFactory {
public:
    explicit WhisperCPPType(Logger logger);
    WhisperCPPType(const WhisperCPPType&) = delete;
    WhisperCPPType& operator=(const WhisperCPPType&) = delete;
    ~WhisperCPPType() override;

    Result<std::unique_ptr<WhisperCPPDependencyProtocol>, TranscriptionError>
    create(const std::filesystem::path& modelFile, bool useGpu, const TranscriptionModelID& modelId,
           TranscriptionSource source, const WhisperSettings& settings) override;

private:
    Logger m_logger;
};

} // namespace vocalith
