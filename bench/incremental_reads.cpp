// A streaming engine reads a recording while it grows: ten reads a second for an hour. A read at the end of the hour
// costs what one at its beginning does.

#include "bench/Median.h"
#include "bench/RecordingBench.h"

#include <cstdio>
#include <vector>

using namespace vocalith;

namespace {

constexpr std::size_t kReads = 36000;
constexpr std::size_t kCompared = kReads / 20;
constexpr double kLimit = 1.5;

} // namespace

int main()
{
    bench::RecordingBench recording(RecordingMode::microphone, true);
    if (!recording.started)
        return 2;
    const std::vector<std::int16_t> piece(kAudioSampleRate / 10, 1234);
    std::vector<double> microseconds;
    microseconds.reserve(kReads);
    for (std::size_t i = 0; i < kReads; ++i) {
        recording.input.microphone->samplesArrived(piece);
        const auto before = std::chrono::steady_clock::now();
        const auto read = recording.manager.readNewAudio();
        microseconds.push_back(toSeconds(std::chrono::steady_clock::now() - before) * 1e6);
        if (!read || read->size() != piece.size() * 2) {
            std::printf("incremental_reads: read %zu is not the new audio\n", i);
            return 2;
        }
    }
    const double first = bench::median<double>({microseconds.begin(), microseconds.begin() + kCompared});
    const double last = bench::median<double>({microseconds.end() - kCompared, microseconds.end()});
    const double ratio = last / first;
    std::printf(
        "incremental_reads: ratio %.2f (limit %.2f); %.2f us a read at the beginning of the hour, %.2f us at its "
        "end\n",
        ratio, kLimit, first, last);
    return ratio <= kLimit ? 0 : 1;
}
