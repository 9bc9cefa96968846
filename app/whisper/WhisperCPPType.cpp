#include "app/whisper/WhisperCPPType.h"

#include "app/whisper/WhisperCPP.h"

#include <whisper.h>

#include <string_view>

namespace vocalith {
namespace {

void writeToLog(ggml_log_level level, const char* text, void* userData)
{
    std::string_view line(text);
    const auto end = line.find_last_not_of(" \r\n");
    if (end == std::string_view::npos)
        return;
    line = line.substr(0, end + 1);
    const auto& logger = *static_cast<const Logger*>(userData);
    if (level == GGML_LOG_LEVEL_ERROR)
        logger.error(line);
    else if (level == GGML_LOG_LEVEL_WARN)
        logger.warning(line);
    else
        logger.debug(line);
}

void drop(ggml_log_level /*level*/, const char* /*text*/, void* /*userData*/)
{}

} // namespace

WhisperCPPType::WhisperCPPType(Logger logger) : m_logger(std::move(logger))
{
    whisper_log_set(writeToLog, &m_logger);
}

WhisperCPPType::~WhisperCPPType()
{
    whisper_log_set(drop, nullptr);
}

Result<std::unique_ptr<WhisperCPPDependencyProtocol>, TranscriptionError>
WhisperCPPType::create(const std::filesystem::path& modelFile, bool useGpu, const TranscriptionModelID& modelId,
                       TranscriptionSource source, const WhisperSettings& settings)
{
    return WhisperCPP::load(modelFile, useGpu, modelId, source, settings, m_logger);
}

} // namespace vocalith
