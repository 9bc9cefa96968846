#pragma once

#include "ports/SpeechRecognizer.h"

#include <functional>
#include <mutex>
#include <optional>

namespace vocalith::test {

/// Recognises what the test scripted and keeps what it was asked. The script is set before the calls; what was asked
/// may be looked at from any thread.
class FakeSpeechRecognizer final : public SpeechRecognizer {
public:
    struct Call {
        std::size_t sampleCount = 0;
        std::string language;
        bool operator==(const Call&) const = default;
    };

    /// The outcome of every recognition; spans beyond the end of the audio are left out, as of silence.
    std::vector<RecognizedSpan> spans;
    /// When set, `availability`, `prepare` and `recognize` fail with it.
    std::optional<SpeechRecognizerError> error;
    /// Runs in the middle of a recognition, on its thread: for a test that stops it or lets it wait there.
    std::function<void()> whileRecognizing;

    Result<void, SpeechRecognizerError> availability() const override;
    std::string displayName() const override { return "Fake recogniser (English)"; }
    std::vector<std::string> languages() const override { return {"en"}; }
    Result<void, SpeechRecognizerError> prepare() override;
    Result<std::vector<RecognizedSpan>, SpeechRecognizerError> recognize(std::span<const float> samples,
                                                                         const std::string& language,
                                                                         const std::function<void(double)>& progress,
                                                                         const StopToken& stop) override;
    void release() override;

    std::vector<Call> calls() const;
    bool isPrepared() const;

private:
    mutable std::mutex m_mutex;
    std::vector<Call> m_calls;
    bool m_isPrepared = false;
};

} // namespace vocalith::test
