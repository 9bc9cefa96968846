#include "bench/Median.h"
#include "models/TranscriptExport.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

/// Exporting must take time linear in the transcript: ten times the segments, at most twelve times the time.
namespace {

using namespace vocalith;

constexpr double kLimit = 12;
constexpr int kRounds = 9;

TranscriptionData transcript(int segments)
{
    TranscriptionData data{PredefinedModelID::small, {}};
    for (int i = 0; i < segments; ++i)
        data.segments.push_back({Uuid::random(),
                                 "Some words that were said, & a few \"more\" number " + std::to_string(i), i * 2.0,
                                 i * 2.0 + 1.9, i % 3 == 0 ? std::optional<std::string>("Ann") : std::nullopt});
    return data;
}

/// The processor time of this thread: other programs on the machine do not count.
double cpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// What one export takes, as the mean of `times`.
double secondsPerExport(const TranscriptionData& data, const ExportFormat& format, int times)
{
    const double start = cpuSeconds();
    for (int i = 0; i < times; ++i) {
        if (exportTranscript(data, format, Date{}).size() < data.segments.size()) {
            std::puts("export: an export is too short");
            std::exit(1);
        }
    }
    return (cpuSeconds() - start) / times;
}

} // namespace

int main()
{
    const auto small = transcript(10'000);
    const auto large = transcript(100'000);
    bool withinLimit = true;
    for (const ExportFormat& format :
         {ExportFormat(FcpxmlFormat{}), ExportFormat(SrtFormat{}), ExportFormat(VttFormat{}),
          ExportFormat(MarkdownFormat{}), ExportFormat(JsonFormat{}), ExportFormat(PlainTextFormat{})}) {
        std::vector<double> ratios;
        std::vector<double> largeTimes;
        for (int round = 0; round < kRounds; ++round) {
            // Side by side and equally long, so that a busy machine slows both.
            const double smallTime = secondsPerExport(small, format, 10);
            largeTimes.push_back(secondsPerExport(large, format, 1));
            ratios.push_back(largeTimes.back() / smallTime);
        }
        const double ratio = bench::median(ratios);
        std::printf("export %s: ratio %.2f (limit %.0f), 100,000 segments in %.0f ms\n",
                    std::string(fileExtension(format)).c_str(), ratio, kLimit, bench::median(largeTimes) * 1000);
        withinLimit = withinLimit && ratio <= kLimit;
    }
    return withinLimit ? 0 : 1;
}
