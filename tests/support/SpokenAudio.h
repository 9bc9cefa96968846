#pragma once

#include "ports/SpeechRecognizer.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vocalith::test {

/// The sentence as the speech synthesiser flite says it, 16 kHz mono in -1..1.
std::vector<float> spoken(const std::string& sentence);
/// The samples of a 16-bit WAV file.
std::vector<float> wavSamples(const std::filesystem::path& file);
std::vector<float> silence(double seconds);

/// The texts, joined with a space.
std::string joined(const std::vector<RecognizedSpan>& words);
/// The word error rate: words to insert, remove or replace, per word of the reference.
double wordErrorRate(const std::string& reference, const std::string& heard);

} // namespace vocalith::test
