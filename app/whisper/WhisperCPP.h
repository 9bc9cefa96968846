#pragma once

#include "base/Log.h"
#include "core/speech/whisper/WhisperCPPDependencyProtocol.h"

#include <atomic>
#include <cstdint>
#include <optional>

struct whisper_context;
struct whisper_full_params;

namespace vocalith {

/// One whisper.cpp context for one model file: the only code that calls the library. Made by `WhisperCPPType`, owned by
/// the whisper service and used on its worker thread; `cancel` may come from any thread.
class WhisperCPP final : public WhisperCPPDependencyProtocol {
public:
    static Result<std::unique_ptr<WhisperCPPDependencyProtocol>, TranscriptionError>
    load(const std::filesystem::path& modelFile, bool useGpu, const TranscriptionModelID& modelId,
         TranscriptionSource source, const WhisperSettings& settings, const Logger& logger);

    WhisperCPP(const WhisperCPP&) = delete;
    WhisperCPP& operator=(const WhisperCPP&) = delete;
    ~WhisperCPP() override;

    Result<WhisperTranscript, TranscriptionError> transcribe(std::span<const float> samples,
                                                             const ProgressHandler& progress) override;
    void cancel() override;
    void release() override;

    const TranscriptionModelID& modelId() const { return m_modelId; }

private:
    using CancelFlag = std::atomic<std::uint8_t>;

    WhisperCPP(whisper_context* context, Logger logger, TranscriptionModelID modelId, TranscriptionSource source,
               WhisperSettings settings);

    Result<void, TranscriptionError> configure(whisper_full_params& parameters);
    Result<void, TranscriptionError> chooseLanguage(whisper_full_params& parameters);
    void passPrompt(whisper_full_params& parameters);
    Result<void, TranscriptionError> decode(const whisper_full_params& parameters, std::span<const float> samples);
    WhisperTranscript collect(double duration) const;

    whisper_context* m_context; ///< null after `release`
    Logger m_logger;
    TranscriptionModelID m_modelId;
    TranscriptionSource m_source;
    WhisperSettings m_settings;
    // What the library is given as plain pointers; replaced at each run.
    std::optional<std::string> m_languageCString;
    std::optional<std::string> m_promptCString;
    std::shared_ptr<CancelFlag> m_isCancelled = std::make_shared<CancelFlag>();
};

} // namespace vocalith
