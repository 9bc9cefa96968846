#include "models/TranscriptExport.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

/// Exporting must take time linear in the transcript: ten times the segments, at most twelve times the time.
namespace {

using namespace vocalith;

constexpr double kLimit = 12;
constexpr int kRuns = 9;

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

double medianSeconds(const TranscriptionData& data, const ExportFormat& format)
{
    std::vector<double> runs;
    for (int i = 0; i < kRuns; ++i) {
        const double start = cpuSeconds();
        const auto text = exportTranscript(data, format, Date{});
        runs.push_back(cpuSeconds() - start);
        if (text.size() < data.segments.size())
            std::puts("export: an export is too short");
    }
    std::ranges::nth_element(runs, runs.begin() + kRuns / 2);
    return runs[kRuns / 2];
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
        const double smallTime = medianSeconds(small, format);
        const double largeTime = medianSeconds(large, format);
        const double ratio = largeTime / smallTime;
        std::printf("export %s: ratio %.2f (limit %.0f), 100,000 segments in %.0f ms\n",
                    std::string(fileExtension(format)).c_str(), ratio, kLimit, largeTime * 1000);
        withinLimit = withinLimit && ratio <= kLimit;
    }
    return withinLimit ? 0 : 1;
}
