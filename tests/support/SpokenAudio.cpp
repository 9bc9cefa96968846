#include "tests/support/SpokenAudio.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <QProcess>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <sstream>

namespace vocalith::test {
namespace {

std::vector<std::string> wordsOf(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

} // namespace

std::vector<float> spoken(const std::string& sentence)
{
    const TemporaryFolder folder;
    const auto file = folder / "speech.wav";
    const int exitCode = QProcess::execute("flite", {"-voice", "slt", "-t", QString::fromStdString(sentence), "-o",
                                                     QString::fromStdString(file.string())});
    EXPECT_EQ(exitCode, 0) << "is flite installed?";
    return wavSamples(file);
}

std::vector<float> wavSamples(const std::filesystem::path& file)
{
    const auto content = readFile(file);
    const auto data = content.find("data");
    if (data == std::string::npos) {
        ADD_FAILURE() << file << " is no WAV file";
        return {};
    }
    constexpr std::size_t kChunkHeader = 8;
    std::vector<float> samples;
    for (auto at = data + kChunkHeader; at + 1 < content.size(); at += 2) {
        std::int16_t sample = 0;
        std::memcpy(&sample, content.data() + at, sizeof sample);
        samples.push_back(static_cast<float>(sample) / 32768.0F);
    }
    return samples;
}

std::vector<float> silence(double seconds)
{
    return std::vector<float>(static_cast<std::size_t>(seconds * 16000));
}

std::string joined(const std::vector<RecognizedSpan>& words)
{
    std::string text;
    for (const auto& word : words)
        text += (text.empty() ? "" : " ") + word.text;
    return text;
}

double wordErrorRate(const std::string& reference, const std::string& heard)
{
    const auto expected = wordsOf(reference);
    const auto actual = wordsOf(heard);
    std::vector<std::size_t> distance(actual.size() + 1);
    std::iota(distance.begin(), distance.end(), 0);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        auto diagonal = std::exchange(distance[0], i + 1);
        for (std::size_t j = 0; j < actual.size(); ++j) {
            const auto replaced = diagonal + (expected[i] == actual[j] ? 0 : 1);
            diagonal = distance[j + 1];
            distance[j + 1] = std::min({replaced, diagonal + 1, distance[j] + 1});
        }
    }
    return static_cast<double>(distance.back()) / static_cast<double>(expected.size());
}

} // namespace vocalith::test
