#include "tests/support/FakeSpeechRecognizer.h"

namespace vocalith::test {

Result<void, SpeechRecognizerError> FakeSpeechRecognizer::availability() const
{
    if (error)
        return failure(*error);
    return {};
}

Result<void, SpeechRecognizerError> FakeSpeechRecognizer::prepare()
{
    if (error)
        return failure(*error);
    const std::lock_guard lock(m_mutex);
    m_isPrepared = true;
    return {};
}

Result<std::vector<RecognizedSpan>, SpeechRecognizerError>
FakeSpeechRecognizer::recognize(std::span<const float> samples, const std::string& language,
                                const std::function<void(double)>& progress, const StopToken& stop)
{
    using Kind = SpeechRecognizerError::Kind;
    {
        const std::lock_guard lock(m_mutex);
        m_calls.push_back({samples.size(), language});
    }
    if (error)
        return failure(*error);
    if (!language.empty() && language != "auto" && language != "en")
        return failure(SpeechRecognizerError{Kind::languageUnsupported, language});
    if (progress)
        progress(0.5);
    if (whileRecognizing)
        whileRecognizing();
    if (stop.stop_requested())
        return failure(SpeechRecognizerError{Kind::cancelled, {}});
    constexpr double kSampleRate = 16000;
    const double duration = static_cast<double>(samples.size()) / kSampleRate;
    std::vector<RecognizedSpan> heard;
    for (const auto& span : spans) {
        if (span.end <= duration)
            heard.push_back(span);
    }
    if (progress)
        progress(1);
    return heard;
}

void FakeSpeechRecognizer::release()
{
    const std::lock_guard lock(m_mutex);
    m_isPrepared = false;
}

std::vector<FakeSpeechRecognizer::Call> FakeSpeechRecognizer::calls() const
{
    const std::lock_guard lock(m_mutex);
    return m_calls;
}

bool FakeSpeechRecognizer::isPrepared() const
{
    const std::lock_guard lock(m_mutex);
    return m_isPrepared;
}

} // namespace vocalith::test
