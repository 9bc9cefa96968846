#pragma once

#include "ports/SpeechRecognizer.h"

#include <filesystem>
#include <memory>

namespace vocalith {

class PocketSphinxDecoder;

/// Where the packages put the English model of PocketSphinx; the usual place when it is nowhere.
std::filesystem::path installedPocketSphinxModel();

/// The recogniser that the distribution packages: PocketSphinx with its English model, lower-case words without
/// punctuation. It works on a machine that has downloaded nothing, and no better than that.
///
/// Made by the composition and used by one worker thread, as the port says. Long audio is decoded in pieces that are
/// cut at pauses, so that time grows with the length and memory does not. A stop is seen about once a second of audio,
/// except in the second pass over a piece, which takes up to some seconds; the recogniser is loaded again after it.
class PocketSphinxRecognizer final : public SpeechRecognizer {
public:
    /// `modelFolder` holds the dictionary, the language model and the folder of the acoustic model.
    explicit PocketSphinxRecognizer(std::filesystem::path modelFolder = installedPocketSphinxModel());
    ~PocketSphinxRecognizer() override;

    Result<void, SpeechRecognizerError> availability() const override;
    std::string displayName() const override;
    std::vector<std::string> languages() const override;

    Result<void, SpeechRecognizerError> prepare() override;
    Result<std::vector<RecognizedSpan>, SpeechRecognizerError> recognize(std::span<const float> samples,
                                                                         const std::string& language,
                                                                         const std::function<void(double)>& progress,
                                                                         const StopToken& stop) override;
    void release() override;

private:
    std::filesystem::path m_modelFolder;
    std::unique_ptr<PocketSphinxDecoder> m_decoder;
};

} // namespace vocalith
