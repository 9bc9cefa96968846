#pragma once

#include "base/StopToken.h"
#include "platform/pocketsphinx/PocketSphinxModel_p.h"
#include "ports/SpeechRecognizer.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace vocalith {

/// The library's decoder with its model loaded. One thread at a time.
class PocketSphinxDecoder {
public:
    static Result<std::unique_ptr<PocketSphinxDecoder>, SpeechRecognizerError> load(const PocketSphinxModel& model);
    PocketSphinxDecoder(const PocketSphinxDecoder&) = delete;
    PocketSphinxDecoder& operator=(const PocketSphinxDecoder&) = delete;
    ~PocketSphinxDecoder();

    /// To be called before the first piece of a recording: forgets the noise of the one before.
    void startRecording();

    /// The words of one piece of 16 kHz audio, with times from the beginning of the piece; nothing when it was stopped,
    /// and then the decoder cannot be used any more. `progress` gets 0..1.
    std::optional<std::vector<RecognizedSpan>>
    decode(std::span<const std::int16_t> samples, const std::function<void(double)>& progress, const StopToken& stop);

private:
    struct Library;
    struct Features;

    explicit PocketSphinxDecoder(std::unique_ptr<Library> library);
    Features features(std::span<const std::int16_t> samples) const;
    std::vector<RecognizedSpan> words(const Features& features) const;

    std::unique_ptr<Library> m_library;
};

} // namespace vocalith
