// An hour of recording from two sources takes no more memory than its first minute.

#include "bench/RecordingBench.h"

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <vector>

using namespace vocalith;
using namespace std::chrono_literals;

namespace {

constexpr double kLimit = 1.1;
constexpr double kMaxGrowth = 2; // MB

double residentMegabytes()
{
    std::ifstream statm("/proc/self/statm");
    long total = 0;
    long resident = 0;
    statm >> total >> resident;
    return static_cast<double>(resident) * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1e6;
}

} // namespace

int main()
{
    bench::RecordingBench recording(RecordingMode::both, false);
    if (!recording.started)
        return 2;
    const std::vector<std::int16_t> piece(kAudioSampleRate / 100 * 3, 1234); // 30 ms, the meter's pace
    constexpr int kMinute = 2000;
    double minute = 0;
    for (int i = 0; i < 60 * kMinute; ++i) {
        recording.input.microphone->samplesArrived(piece);
        // A clock that is 200 ppm slower: every now and then a piece is short.
        recording.input.systemAudio->samplesArrived(std::span(piece).first(piece.size() - (i % 10 == 0 ? 1 : 0)));
        recording.clock.advance(30ms);
        if (i == kMinute)
            minute = residentMegabytes();
    }
    const double hour = residentMegabytes();
    const double ratio = hour / minute;
    std::printf(
        "recording_memory: ratio %.3f (limit %.2f); %.2f MB after a minute, %.2f MB after an hour, growth %.2f MB "
        "(limit %.0f)\n",
        ratio, kLimit, minute, hour, hour - minute, kMaxGrowth);
    return ratio <= kLimit && hour - minute <= kMaxGrowth ? 0 : 1;
}
