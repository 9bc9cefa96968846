#include "app/whisper/WhisperCPP.h"

#include "app/whisper/SegmentText.h"

#include <fmt/format.h>
#include <whisper.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <thread>
#include <utility>

#include <malloc.h>

namespace vocalith {
namespace {

using Kind = TranscriptionError::Kind;

/// The library reads the last 224 tokens of a prompt, which are shorter than this. It takes a prompt apart in a time
/// that grows with the cube of the longest stretch without spaces, and on a stack that overflows when that is very
/// long.
constexpr std::size_t kLongestPrompt = 2048;
/// The library has no room for more.
constexpr int kMostThreads = GGML_MAX_N_THREADS;
/// A decode scales to about so many threads.
constexpr unsigned kUsefulThreads = 8;

int threadCount(int wanted)
{
    if (wanted > 0)
        return std::min(wanted, kMostThreads);
    return static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, kUsefulThreads));
}

/// Above 1 the library has no temperature to decode with.
float decodingTemperature(float wanted)
{
    return std::isnan(wanted) ? 0.0F : std::clamp(wanted, 0.0F, 1.0F);
}

/// The end of the prompt, from the beginning of a character on.
std::string_view readablePrompt(std::string_view prompt)
{
    if (prompt.size() <= kLongestPrompt)
        return prompt;
    prompt.remove_prefix(prompt.size() - kLongestPrompt);
    while (!prompt.empty() && (static_cast<unsigned char>(prompt.front()) & 0xC0) == 0x80)
        prompt.remove_prefix(1);
    return prompt;
}

bool isAborted(void* flag)
{
    return static_cast<const std::atomic<std::uint8_t>*>(flag)->load(std::memory_order_relaxed) != 0;
}

void forwardProgress(whisper_context* /*context*/, whisper_state* /*state*/, int percent, void* handler)
{
    // A last window that is not full carries the library beyond the end.
    (*static_cast<const WhisperCPP::ProgressHandler*>(handler))(std::clamp(percent, 0, 100));
}

/// The models hold the languages in the library's order, and a model of fewer languages uses the numbers of the others
/// for other tokens.
bool knowsLanguage(whisper_context* context, int languageNumber)
{
    constexpr int kOtherTokens = 51766;
    return languageNumber >= 0 && languageNumber < whisper_model_n_vocab(context) - kOtherTokens;
}

} // namespace

Result<std::unique_ptr<WhisperCPPDependencyProtocol>, TranscriptionError>
WhisperCPP::load(const std::filesystem::path& modelFile, bool useGpu, const TranscriptionModelID& modelId,
                 TranscriptionSource source, const WhisperSettings& settings, const Logger& logger)
{
    whisper_context* context = nullptr;
    try {
        auto parameters = whisper_context_default_params();
        parameters.use_gpu = useGpu;
        context = whisper_init_from_file_with_params(modelFile.c_str(), parameters);
    } catch (const std::exception& exception) {
        logger.error(fmt::format("Whisper initialization failed: {}", exception.what()));
    }
    if (!context)
        return failure(TranscriptionError{Kind::initializationFailed, modelFile.string()});
    return std::unique_ptr<WhisperCPPDependencyProtocol>(new WhisperCPP(context, logger, modelId, source, settings));
}

WhisperCPP::WhisperCPP(whisper_context* context, Logger logger, TranscriptionModelID modelId,
                       TranscriptionSource source, WhisperSettings settings)
    : m_context(context), m_logger(std::move(logger)), m_modelId(std::move(modelId)), m_source(source),
      m_settings(std::move(settings))
{}

WhisperCPP::~WhisperCPP()
{
    release();
}

void WhisperCPP::cancel()
{
    m_isCancelled->store(1, std::memory_order_relaxed);
}

void WhisperCPP::release()
{
    auto* context = std::exchange(m_context, nullptr);
    if (!context)
        return;
    whisper_free(context);
    malloc_trim(0);
}

Result<WhisperTranscript, TranscriptionError> WhisperCPP::transcribe(std::span<const float> samples,
                                                                     const ProgressHandler& progress)
{
    if (!m_context)
        return failure(TranscriptionError{Kind::contextMissing, {}});
    if (samples.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        return failure(TranscriptionError{Kind::failed, "The recording is too long for one decode."});
    if (samples.empty())
        return WhisperTranscript{}; // the library would decode the samples of the last run again
    m_isCancelled->store(0, std::memory_order_relaxed);

    auto parameters = whisper_full_default_params(WHISPER_SAMPLING_GREEDY);
    if (auto configured = configure(parameters); !configured)
        return failure(std::move(configured.error()));
    if (progress) {
        parameters.progress_callback = forwardProgress;
        parameters.progress_callback_user_data = const_cast<ProgressHandler*>(&progress);
    }
    parameters.abort_callback = isAborted;
    parameters.abort_callback_user_data = m_isCancelled.get();

    if (auto decoded = decode(parameters, samples); !decoded)
        return failure(std::move(decoded.error()));
    auto transcript = collect(static_cast<double>(samples.size()) / WHISPER_SAMPLE_RATE);
    whisper_print_timings(m_context);
    return transcript;
}

Result<void, TranscriptionError> WhisperCPP::configure(whisper_full_params& parameters)
{
    if (auto chosen = chooseLanguage(parameters); !chosen)
        return chosen;
    parameters.n_threads = threadCount(m_settings.whisperThreads);
    if (m_settings.whisperFixRepetitions)
        parameters.n_max_text_ctx = 0;
    parameters.offset_ms = 0;
    parameters.no_context = true;
    parameters.single_segment = false;
    parameters.print_special = false;
    parameters.print_progress = false;
    parameters.print_realtime = false;
    parameters.print_timestamps = true;
    parameters.token_timestamps = true;
    if (m_settings.whisperMaxSentenceLength > 0)
        parameters.max_len = m_settings.whisperMaxSentenceLength;
    passPrompt(parameters);
    if (m_source == TranscriptionSource::dictation)
        parameters.suppress_nst = true;
    parameters.temperature = decodingTemperature(m_settings.whisperTemperature);
    m_logger.info(fmt::format("Whisper config - language: '{}', translate: {}, detect language: {}, prompt length: {}",
                              parameters.language, parameters.translate, parameters.detect_language,
                              m_promptCString ? m_promptCString->size() : 0));
    return {};
}

Result<void, TranscriptionError> WhisperCPP::chooseLanguage(whisper_full_params& parameters)
{
    auto language = m_settings.whisperLanguage;
    // A model that knows English only has nothing to detect among: the library would take what it says for a language.
    if (language == WhisperLanguage::automatic && whisper_is_multilingual(m_context) == 0)
        language = WhisperLanguage::en;

    if (language == WhisperLanguage::en) {
        parameters.translate = false;
    } else if (m_settings.whisperTranslateToEnglish) {
        // Meant so: the switch pins the decoder to English output.
        language = WhisperLanguage::en;
        parameters.translate = true;
    } else if (language != WhisperLanguage::automatic) {
        parameters.translate = false;
    }

    if (language == WhisperLanguage::automatic) {
        m_languageCString.emplace();
    } else {
        m_languageCString.emplace(rawValue(language));
        parameters.detect_language = false;
        const bool isMultilingual = whisper_is_multilingual(m_context) != 0;
        if (isMultilingual && !knowsLanguage(m_context, whisper_lang_id(m_languageCString->c_str())))
            return failure(TranscriptionError{Kind::languageUnknown, std::string(displayName(language))});
    }
    parameters.language = m_languageCString->c_str();
    return {};
}

void WhisperCPP::passPrompt(whisper_full_params& parameters)
{
    m_promptCString.reset();
    if (m_settings.whisperPrompt.empty())
        return;
    m_promptCString.emplace(readablePrompt(m_settings.whisperPrompt));
    parameters.initial_prompt = m_promptCString->c_str();
}

Result<void, TranscriptionError> WhisperCPP::decode(const whisper_full_params& parameters,
                                                    std::span<const float> samples)
{
    int code = 0;
    try {
        code = whisper_full(m_context, parameters, samples.data(), static_cast<int>(samples.size()));
    } catch (const std::exception& exception) {
        m_logger.error(std::string("Whisper threw: ") + exception.what());
        return failure(TranscriptionError{Kind::failed, "The model cannot decode. Its file may be damaged: fetch it "
                                                        "again, or choose another model."});
    }
    if (isAborted(m_isCancelled.get()))
        return failure(TranscriptionError{Kind::cancelled, {}});
    if (code != 0)
        return failure(TranscriptionError{Kind::decodeFailed, std::to_string(code)});
    return {};
}

WhisperTranscript WhisperCPP::collect(double duration) const
{
    WhisperTranscript transcript;
    SegmentText texts;
    const int count = whisper_full_n_segments(m_context);
    for (int i = 0; i < count; ++i) {
        auto text = texts.next(whisper_full_get_segment_text(m_context, i), i + 1 == count);
        if (text.empty())
            continue;
        // Without time stamps, and at the end of the audio, the library's times lie outside of it.
        const double start =
            std::clamp(static_cast<double>(whisper_full_get_segment_t0(m_context, i)) / 100.0, 0.0, duration);
        const double end =
            std::clamp(static_cast<double>(whisper_full_get_segment_t1(m_context, i)) / 100.0, start, duration);
        if (!transcript.text.empty())
            transcript.text += ' ';
        transcript.text += text;
        transcript.segments.push_back({Uuid::random(), std::move(text), start, end, std::nullopt});
    }
    return transcript;
}

} // namespace vocalith
