// Converting a recording needs the same memory whatever its length.

#include "platform/media/FFmpegPCMConverter.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace vocalith;
namespace fs = std::filesystem;

constexpr double kLimit = 1.2;
constexpr std::uint32_t kBytesPerSecond = 48000 * 4;

void appendNumber(std::string& bytes, std::uint32_t value, int size)
{
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> (8 * i));
}

/// 48 kHz stereo silence that takes no space on the disk.
void writeWav(const fs::path& file, std::uint32_t seconds)
{
    const std::uint32_t dataBytes = seconds * kBytesPerSecond;
    std::string header = "RIFF";
    appendNumber(header, 36 + dataBytes, 4);
    header += "WAVEfmt ";
    appendNumber(header, 16, 4);
    appendNumber(header, 1, 2);
    appendNumber(header, 2, 2);
    appendNumber(header, 48000, 4);
    appendNumber(header, kBytesPerSecond, 4);
    appendNumber(header, 4, 2);
    appendNumber(header, 16, 2);
    header += "data";
    appendNumber(header, dataBytes, 4);
    std::ofstream(file, std::ios::binary) << header;
    fs::resize_file(file, header.size() + dataBytes);
}

bool convertsWhole(const fs::path& file, std::int64_t seconds)
{
    const FFmpegPCMConverter converter;
    const auto count = converter.convert(file, [](std::span<const float>) { return true; }, {}, {});
    return count && *count == seconds * 16000;
}

/// The peak memory, in kilobytes, of a process that converts so many seconds.
long peakOfConversion(const fs::path& folder, std::uint32_t seconds)
{
    const auto file = folder / (std::to_string(seconds) + ".wav");
    writeWav(file, seconds);
    const auto child = ::fork();
    if (child == 0)
        ::_exit(convertsWhole(file, seconds) ? 0 : 1);
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    fs::remove(file);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "the conversion of %u seconds failed\n", seconds);
        std::exit(1);
    }
    return usage.ru_maxrss;
}

} // namespace

int main()
{
    std::string pattern = (fs::temp_directory_path() / "vocalith-bench-XXXXXX").string();
    const fs::path folder = ::mkdtemp(pattern.data());
    const auto minute = peakOfConversion(folder, 60);
    const auto hour = peakOfConversion(folder, 3600);
    fs::remove_all(folder);
    const double ratio = static_cast<double>(hour) / static_cast<double>(minute);
    std::printf("conversion_memory: ratio %.2f (limit %.2f), one hour %ld KB, one minute %ld KB\n", ratio, kLimit, hour,
                minute);
    return ratio <= kLimit ? 0 : 1;
}
