#include "platform/pocketsphinx/PocketSphinxRecognizer.h"

#include "platform/pocketsphinx/PocketSphinxDecoder_p.h"
#include "platform/pocketsphinx/SpeechPieces_p.h"

#include <algorithm>
#include <array>

#include <malloc.h>

namespace vocalith {
namespace {

namespace fs = std::filesystem;
using Kind = SpeechRecognizerError::Kind;

constexpr double kSampleRate = 16000;

void appendShifted(std::vector<RecognizedSpan>& words, std::vector<RecognizedSpan> piece, const SpeechPiece& place)
{
    const double offset = static_cast<double>(place.begin) / kSampleRate;
    const double end = static_cast<double>(place.end) / kSampleRate;
    for (auto& word : piece) {
        word.start = std::min(word.start + offset, end);
        word.end = std::min(word.end + offset, end);
        words.push_back(std::move(word));
    }
}

} // namespace

fs::path installedPocketSphinxModel()
{
    const std::array<fs::path, 2> places{"/usr/share/pocketsphinx/model/en-us",
                                         "/usr/local/share/pocketsphinx/model/en-us"};
    std::error_code error;
    const auto* found = std::find_if(places.begin(), places.end(),
                                     [&error](const fs::path& place) { return fs::is_directory(place, error); });
    return found == places.end() ? places.front() : *found;
}

PocketSphinxRecognizer::PocketSphinxRecognizer(fs::path modelFolder) : m_modelFolder(std::move(modelFolder))
{}

PocketSphinxRecognizer::~PocketSphinxRecognizer() = default;

Result<void, SpeechRecognizerError> PocketSphinxRecognizer::availability() const
{
    if (auto model = findPocketSphinxModel(m_modelFolder); !model)
        return failure(SpeechRecognizerError{Kind::modelMissing, model.error()});
    return {};
}

std::string PocketSphinxRecognizer::displayName() const
{
    return "PocketSphinx (English)";
}

std::vector<std::string> PocketSphinxRecognizer::languages() const
{
    return {"en"};
}

Result<void, SpeechRecognizerError> PocketSphinxRecognizer::prepare()
{
    if (m_decoder)
        return {};
    const auto model = findPocketSphinxModel(m_modelFolder);
    if (!model)
        return failure(SpeechRecognizerError{Kind::modelMissing, model.error()});
    auto loaded = PocketSphinxDecoder::load(*model);
    if (!loaded)
        return failure(loaded.error());
    m_decoder = std::move(*loaded);
    return {};
}

Result<std::vector<RecognizedSpan>, SpeechRecognizerError>
PocketSphinxRecognizer::recognize(std::span<const float> samples, const std::string& language,
                                  const std::function<void(double)>& progress, const StopToken& stop)
{
    if (!language.empty() && language != "auto" && language != "en")
        return failure(SpeechRecognizerError{Kind::languageUnsupported, language});
    if (auto prepared = prepare(); !prepared)
        return failure(prepared.error());
    const auto report = [&progress](double done) {
        if (progress)
            progress(done);
    };
    const auto total = static_cast<double>(samples.size());
    const float gain = gainFor(samples);
    std::vector<RecognizedSpan> words;
    m_decoder->startRecording();
    for (const auto& piece : piecesCutAtPauses(samples)) {
        const auto length = static_cast<double>(piece.end - piece.begin);
        auto heard = m_decoder->decode(
            to16Bit(samples.subspan(piece.begin, piece.end - piece.begin), gain),
            [&](double done) { report((static_cast<double>(piece.begin) + done * length) / total); }, stop);
        if (!heard) {
            m_decoder.reset();
            return failure(SpeechRecognizerError{Kind::cancelled, {}});
        }
        appendShifted(words, std::move(*heard), piece);
    }
    report(1);
    return words;
}

void PocketSphinxRecognizer::release()
{
    if (!m_decoder)
        return;
    m_decoder.reset();
    ::malloc_trim(0); // else the C library keeps the hundred megabytes for itself
}

} // namespace vocalith
