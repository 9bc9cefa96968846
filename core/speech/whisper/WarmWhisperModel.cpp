#include "core/speech/whisper/WarmWhisperModel.h"

#include "core/speech/whisper/WhisperModelFile.h"

#include <fmt/format.h>

namespace vocalith {
namespace {

/// The library takes the processor by itself where it finds nothing better.
constexpr bool kUseGpu = true;

} // namespace

WarmWhisperModel::WarmWhisperModel(WhisperCPPFactory& whisperCPPType, Logger logger)
    : m_whisperCPPType(whisperCPPType), m_logger(std::move(logger))
{}

Result<WhisperCPPDependencyProtocol*, TranscriptionError> WarmWhisperModel::load(const WhisperSelection& selection)
{
    const auto stamp = stampOf(selection.modelFile);
    if (m_whisperCPP && m_selection == selection && m_stamp == stamp)
        return m_whisperCPP.get();
    release(); // first, so that there is never room needed for two
    if (auto verified = verify(selection.modelFile, stamp); !verified)
        return failure(std::move(verified.error()));
    auto loaded =
        m_whisperCPPType.create(selection.modelFile, kUseGpu, selection.modelId, selection.source, selection.settings);
    if (!loaded)
        return failure(std::move(loaded.error()));
    m_whisperCPP = std::move(*loaded);
    m_selection = selection;
    m_stamp = stamp;
    m_isLoaded = true;
    m_logger.info(fmt::format("Loaded whisper model {}", selection.modelFile.string()));
    return m_whisperCPP.get();
}

void WarmWhisperModel::release()
{
    m_whisperCPP.reset();
    m_isLoaded = false;
}

WarmWhisperModel::Stamp WarmWhisperModel::stampOf(const std::filesystem::path& file)
{
    std::error_code ignored; // a file that is gone is told by the verification
    return {std::filesystem::file_size(file, ignored), std::filesystem::last_write_time(file, ignored)};
}

Result<void, TranscriptionError> WarmWhisperModel::verify(const std::filesystem::path& file, const Stamp& stamp)
{
    const auto known = m_verified.find(file);
    if (known != m_verified.end() && known->second == stamp)
        return {};
    const auto model = readWhisperModelFile(file);
    if (!model) {
        m_logger.error(fmt::format("Whisper model {} is damaged: {}", file.string(), model.error()));
        return failure(TranscriptionError{
            TranscriptionError::Kind::modelDamaged,
            fmt::format("The model file \"{}\" is damaged, incomplete or not a Whisper model. Delete it, then download "
                        "or import the model again.",
                        file.string())});
    }
    m_verified[file] = stamp;
    return {};
}

} // namespace vocalith
