#include "tests/platform/media/Sound.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <numbers>

namespace vocalith::test {
namespace {

void append(std::string& bytes, std::uint64_t value, int size)
{
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> (8 * i));
}

/// ITU-T G.711.
std::uint8_t muLaw(double sample)
{
    const double magnitude = std::log1p(255 * std::abs(sample)) / std::log(256);
    const auto code = static_cast<int>(std::lround(magnitude * 127));
    return static_cast<std::uint8_t>(~(sample < 0 ? code | 0x80 : code));
}

void appendSample(std::string& bytes, const WavForm& form, double sample)
{
    if (form.coding == WavForm::Coding::muLaw) {
        append(bytes, muLaw(sample), 1);
    } else if (form.coding == WavForm::Coding::floating) {
        if (form.bits == 64)
            append(bytes, std::bit_cast<std::uint64_t>(sample), 8);
        else
            append(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(sample)), 4);
    } else {
        const double full = std::ldexp(1.0, form.bits - 1);
        const auto value = std::clamp(std::llround(sample * full), -std::llround(full), std::llround(full) - 1);
        append(bytes, static_cast<std::uint64_t>(form.bits == 8 ? value + 128 : value), form.bits / 8);
    }
}

} // namespace

std::string wavHeader(const WavForm& form, std::uint32_t dataBytes)
{
    const auto blockSize = static_cast<std::uint32_t>(form.channels * form.bits / 8);
    const auto coding = static_cast<std::uint32_t>(form.coding);
    const std::uint32_t formatSize = form.extensible ? 40 : 16;
    std::string bytes = "RIFF";
    append(bytes, 20 + formatSize + dataBytes, 4);
    bytes += "WAVEfmt ";
    append(bytes, formatSize, 4);
    append(bytes, form.extensible ? 0xFFFE : coding, 2);
    append(bytes, static_cast<std::uint32_t>(form.channels), 2);
    append(bytes, static_cast<std::uint32_t>(form.rate), 4);
    append(bytes, static_cast<std::uint32_t>(form.rate) * blockSize, 4);
    append(bytes, blockSize, 2);
    append(bytes, static_cast<std::uint32_t>(form.bits), 2);
    if (form.extensible) {
        append(bytes, 22, 2);
        append(bytes, static_cast<std::uint32_t>(form.bits), 2);
        append(bytes, form.mask, 4);
        append(bytes, coding, 2); // the coding's GUID
        bytes.append("\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14);
    }
    bytes += "data";
    append(bytes, dataBytes, 4);
    return bytes;
}

std::string wavOf(const WavForm& form, std::span<const double> samples)
{
    const auto frameBytes = static_cast<std::size_t>(form.channels * form.bits / 8);
    std::string bytes = wavHeader(form, static_cast<std::uint32_t>(samples.size() * frameBytes));
    bytes.reserve(bytes.size() + samples.size() * frameBytes);
    for (const double sample : samples)
        for (int channel = 0; channel < form.channels; ++channel)
            appendSample(bytes, form, form.onlyChannel < 0 || form.onlyChannel == channel ? sample : 0);
    return bytes;
}

std::vector<double> tone(double hertz, double amplitude, double seconds, int rate)
{
    std::vector<double> samples(static_cast<std::size_t>(seconds * rate));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = amplitude * std::sin(2 * std::numbers::pi * hertz * static_cast<double>(i) / rate);
    return samples;
}

std::string wavOfTone(const WavForm& form, double seconds)
{
    return wavOf(form, tone(440, 0.5, seconds, form.rate));
}

Measured measure(std::span<const float> samples, double hertz)
{
    Measured result{.seconds = static_cast<double>(samples.size()) / 16000};
    if (samples.size() < 3200)
        return result;
    const auto middle = samples.subspan(800, samples.size() - 1600);
    std::complex<double> sum = 0;
    double energy = 0;
    for (std::size_t i = 0; i < middle.size(); ++i) {
        sum +=
            std::polar(static_cast<double>(middle[i]), -2 * std::numbers::pi * hertz * static_cast<double>(i) / 16000);
        energy += static_cast<double>(middle[i]) * middle[i];
    }
    const auto count = static_cast<double>(middle.size());
    result.amplitude = 2 * std::abs(sum) / count;
    result.rest = std::sqrt(std::max(0.0, 2 * energy / count - result.amplitude * result.amplitude));
    return result;
}

} // namespace vocalith::test
