#include "platform/pocketsphinx/PocketSphinxDecoder_p.h"

#include <pocketsphinx.h>
#include <sphinxbase/err.h>
#include <sphinxbase/fe.h>
#include <sphinxbase/feat.h>

#include <algorithm>
#include <csetjmp>
#include <string_view>

namespace vocalith {
namespace {

constexpr std::size_t kFrameShift = 160; // 10 ms
constexpr double kFrameSeconds = 0.01;
/// The analysis window is longer than its step: a frame is there when this many more steps were heard.
constexpr std::size_t kFrameDelay = 2;
constexpr std::size_t kFramesBetweenStops = 50;
/// Found by trial on recordings of readers and of a speech, and on synthesised speech: the library's own 8.5 and 9.5
/// make a quarter more errors on the readers. Other weights of the first pass, beams and penalties helped nothing, or
/// one recording at the cost of another.
constexpr auto kSecondPassLanguageWeight = "6.5";
constexpr auto kThirdPassLanguageWeight = "8.5";
/// What the second and third pass over a piece take of its time, roughly.
constexpr double kFirstPassShare = 0.7;

void ignoreMessage(void*, err_lvl_t, const char*, ...)
{}

/// The library ends the process over a model that it cannot use, right after it has told of it.
void leaveWhenFatal(void* wayOut, err_lvl_t level, const char*, ...)
{
    if (level == ERR_FATAL)
        std::longjmp(*static_cast<std::jmp_buf*>(wayOut), 1);
}

/// Nothing when the model cannot be used; then some of the library's memory is lost.
ps_decoder_t* initialised(cmd_ln_t* options)
{
    std::jmp_buf wayOut;
    err_set_logfp(nullptr); // the list of options takes this way
    err_set_callback(leaveWhenFatal, &wayOut);
    // Between here and the jump lie frames of the library only, which is C.
    ps_decoder_t* const decoder = setjmp(wayOut) == 0 ? ps_init(options) : nullptr;
    err_set_callback(ignoreMessage, nullptr);
    return decoder;
}

/// Silences and noises are words to the library.
bool isFiller(std::string_view word)
{
    return word.empty() || word.front() == '<' || word.front() == '[' || word.front() == '+';
}

/// "read(2)" is another way to say "read".
std::string_view withoutVariant(std::string_view word)
{
    const auto bracket = word.find('(');
    return bracket == 0 ? word : word.substr(0, bracket);
}

} // namespace

struct PocketSphinxDecoder::Library {
    ps_decoder_t* decoder = nullptr;

    explicit Library(ps_decoder_t* made) : decoder(made) {}
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { ps_free(decoder); }
};

/// What the decoder hears: the spectral shape of every 10 ms of speech; silence is left out.
struct PocketSphinxDecoder::Features {
    std::size_t width = 0;
    std::vector<mfcc_t> values;
    std::vector<std::size_t> frames; ///< where each one lies in the audio, in frames

    std::size_t count() const { return frames.size(); }

    /// Every microphone and room colours the sound in its own way; the mean over the whole piece is that colour. The
    /// library can do the same only when it gets the whole piece in one call, which cannot be stopped.
    void subtractMean()
    {
        std::vector<double> mean(width);
        for (std::size_t i = 0; i < values.size(); ++i)
            mean[i % width] += values[i];
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] -= static_cast<mfcc_t>(mean[i % width] / static_cast<double>(count()));
    }
};

PocketSphinxDecoder::PocketSphinxDecoder(std::unique_ptr<Library> library) : m_library(std::move(library))
{}

PocketSphinxDecoder::~PocketSphinxDecoder() = default;

Result<std::unique_ptr<PocketSphinxDecoder>, SpeechRecognizerError>
PocketSphinxDecoder::load(const PocketSphinxModel& model)
{
    using Kind = SpeechRecognizerError::Kind;
    err_set_callback(ignoreMessage, nullptr);
    cmd_ln_t* options = cmd_ln_init(nullptr, ps_args(), 1, "-hmm", model.acousticModel.c_str(), "-lm",
                                    model.languageModel.c_str(), "-dict", model.dictionary.c_str(), "-fwdflatlw",
                                    kSecondPassLanguageWeight, "-bestpathlw", kThirdPassLanguageWeight, nullptr);
    if (!options)
        return failure(SpeechRecognizerError{Kind::failed, "the decoder refuses its options"});
    ps_decoder_t* decoder = initialised(options);
    cmd_ln_free_r(options);
    if (!decoder)
        return failure(SpeechRecognizerError{Kind::failed, "the model could not be loaded"});
    ps_get_feat(decoder)->cmn = CMN_NONE; // the model's own file asks for what Features does
    return std::unique_ptr<PocketSphinxDecoder>(new PocketSphinxDecoder(std::make_unique<Library>(decoder)));
}

void PocketSphinxDecoder::startRecording()
{
    ps_start_stream(m_library->decoder);
}

PocketSphinxDecoder::Features PocketSphinxDecoder::features(std::span<const std::int16_t> samples) const
{
    constexpr std::size_t kMostAtOnce = 200; // when speech begins, the moment before it comes too
    fe_t* frontEnd = ps_get_fe(m_library->decoder);
    Features features;
    features.width = static_cast<std::size_t>(fe_get_output_size(frontEnd));
    std::vector<mfcc_t> values(kMostAtOnce * features.width);
    std::vector<mfcc_t*> rows;
    for (std::size_t row = 0; row < kMostAtOnce; ++row)
        rows.push_back(values.data() + row * features.width);

    fe_start_utt(frontEnd);
    const std::int16_t* next = samples.data();
    for (std::size_t frame = 0; frame < samples.size() / kFrameShift; ++frame) {
        // One frame at a time: only so is it known which of them the front end leaves out.
        std::size_t left = kFrameShift;
        std::int32_t count = kMostAtOnce;
        if (fe_process_frames(frontEnd, &next, &left, rows.data(), &count, nullptr) < 0)
            break;
        const auto made = static_cast<std::size_t>(count);
        const auto first = frame + 1 - std::min(frame + 1, made + kFrameDelay);
        for (std::size_t i = 0; i < made; ++i) {
            features.values.insert(features.values.end(), rows[i], rows[i] + features.width);
            features.frames.push_back(first + i);
        }
    }
    std::int32_t ignored = 0;
    fe_end_utt(frontEnd, values.data(), &ignored);
    features.subtractMean();
    return features;
}

std::optional<std::vector<RecognizedSpan>> PocketSphinxDecoder::decode(std::span<const std::int16_t> samples,
                                                                       const std::function<void(double)>& progress,
                                                                       const StopToken& stop)
{
    if (stop.stop_requested())
        return std::nullopt;
    auto heard = features(samples);
    if (heard.count() == 0)
        return std::vector<RecognizedSpan>();
    ps_decoder_t* decoder = m_library->decoder;
    ps_start_utt(decoder);
    for (std::size_t at = 0; at < heard.count(); at += kFramesBetweenStops) {
        if (stop.stop_requested())
            return std::nullopt;
        const auto count = std::min(kFramesBetweenStops, heard.count() - at);
        std::vector<mfcc_t*> rows;
        for (std::size_t row = 0; row < count; ++row)
            rows.push_back(heard.values.data() + (at + row) * heard.width);
        ps_process_cep(decoder, rows.data(), static_cast<int>(count), 0, 0);
        progress(kFirstPassShare * static_cast<double>(at + count) / static_cast<double>(heard.count()));
    }
    ps_end_utt(decoder);
    progress(1);
    return words(heard);
}

std::vector<RecognizedSpan> PocketSphinxDecoder::words(const Features& features) const
{
    std::vector<RecognizedSpan> words;
    for (ps_seg_t* segment = ps_seg_iter(m_library->decoder); segment; segment = ps_seg_next(segment)) {
        const std::string_view word = ps_seg_word(segment);
        int first = 0;
        int last = 0;
        ps_seg_frames(segment, &first, &last);
        const auto limit = static_cast<int>(features.count()) - 1;
        if (isFiller(word) || first < 0 || first > limit)
            continue;
        const auto start = features.frames[static_cast<std::size_t>(first)];
        const auto end = features.frames[static_cast<std::size_t>(std::clamp(last, first, limit))] + 1;
        words.push_back({std::string(withoutVariant(word)), static_cast<double>(start) * kFrameSeconds,
                         static_cast<double>(end) * kFrameSeconds});
    }
    return words;
}

} // namespace vocalith
