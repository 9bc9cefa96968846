#include "core/speech/AudioPieces.h"

#include "base/Log.h"
#include "ports/PCMConverter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>
#include <vector>

namespace vocalith {
namespace {

using Kind = TranscriptionError::Kind;

constexpr std::size_t kSampleRate = 16000;
constexpr std::size_t kLongestPiece = std::size_t{10} * 60 * kSampleRate;
/// The cut lies in so much at the end of a piece: there is a pause in almost every half minute of speech.
constexpr std::size_t kCutRange = 30 * kSampleRate;
constexpr std::size_t kCutFrame = kSampleRate / 5;

/// The middle of the quietest fifth of a second in the last half minute of `samples`.
std::size_t quietestPoint(std::span<const float> samples)
{
    std::size_t quietest = samples.size();
    float least = std::numeric_limits<float>::max();
    for (auto begin = samples.size() - kCutRange; begin + kCutFrame <= samples.size(); begin += kCutFrame) {
        const auto frame = samples.subspan(begin, kCutFrame);
        const float energy = std::inner_product(frame.begin(), frame.end(), frame.begin(), 0.0F);
        if (energy < least) {
            least = energy;
            quietest = begin + kCutFrame / 2;
        }
    }
    return quietest;
}

class PieceCutter {
public:
    PieceCutter(std::size_t longestPiece, double expectedSamples, const PieceRecognition& recognize,
                const std::function<void(double)>& progress)
        : m_longestPiece(longestPiece), m_expectedSamples(expectedSamples), m_recognize(recognize), m_progress(progress)
    {}

    /// Yields whether there is a point in going on.
    bool add(std::span<const float> samples)
    {
        // A float file may hold values that are no numbers, with which a model decodes for minutes.
        std::transform(samples.begin(), samples.end(), std::back_inserter(m_samples),
                       [](float sample) { return std::isfinite(sample) ? sample : 0.0F; });
        while (m_outcome && m_samples.size() >= m_longestPiece)
            recognize(quietestPoint(std::span(m_samples).first(m_longestPiece)));
        return m_outcome.has_value();
    }

    Result<void, TranscriptionError> finish()
    {
        if (m_outcome && !m_samples.empty())
            recognize(m_samples.size());
        return m_outcome;
    }

    const Result<void, TranscriptionError>& outcome() const { return m_outcome; }

private:
    void recognize(std::size_t count)
    {
        const auto begin = static_cast<double>(m_done);
        const auto length = static_cast<double>(count);
        const double whole = std::max(m_expectedSamples, begin + static_cast<double>(m_samples.size()));
        m_outcome = m_recognize(std::span(m_samples).first(count), begin / kSampleRate,
                                [&](double part) { report((begin + part * length) / whole); });
        m_samples.erase(m_samples.begin(), m_samples.begin() + static_cast<std::ptrdiff_t>(count));
        m_done += count;
    }

    void report(double progress)
    {
        if (progress <= m_reported)
            return;
        m_reported = std::min(progress, 1.0);
        m_progress(m_reported);
    }

    std::size_t m_longestPiece;
    double m_expectedSamples; ///< 0 when the container does not say
    const PieceRecognition& m_recognize;
    const std::function<void(double)>& m_progress;
    std::vector<float> m_samples; ///< that are not recognised yet
    std::size_t m_done = 0;
    double m_reported = 0;
    Result<void, TranscriptionError> m_outcome;
};

TranscriptionError conversionFailed(const ConversionError& error, TranscriptionSource source, const Logger& logger)
{
    if (error.cancelled)
        return {Kind::cancelled, {}};
    logger.error(fmt::format("Audio conversion failed: {} {}", userMessage(error), error.detail));
    // The user knows nothing of the file that a dictation was recorded into.
    return {Kind::audioConversion, source == TranscriptionSource::file ? userMessage(error) : std::string()};
}

} // namespace

Result<void, TranscriptionError> recognizeInPieces(const PCMConverter& converter,
                                                   const std::filesystem::path& recording, TranscriptionSource source,
                                                   const PieceRecognition& recognize,
                                                   const std::function<void(double)>& progress, const Logger& logger,
                                                   const StopToken& stop)
{
    auto longestPiece = std::numeric_limits<std::size_t>::max();
    double expectedSamples = 0;
    if (source == TranscriptionSource::file) {
        const auto media = converter.examine(recording);
        if (!media)
            return failure(conversionFailed(media.error(), source, logger));
        longestPiece = kLongestPiece;
        expectedSamples = media->duration * kSampleRate;
    }
    PieceCutter cutter(longestPiece, expectedSamples, recognize, progress);
    const auto converted = converter.convert(
        recording, [&](std::span<const float> samples) { return cutter.add(samples); }, [](double) {}, stop);
    if (!cutter.outcome())
        return cutter.outcome();
    if (!converted)
        return failure(conversionFailed(converted.error(), source, logger));
    return cutter.finish();
}

} // namespace vocalith
