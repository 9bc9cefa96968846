#include "platform/media/WavWriter_p.h"
#include "tests/platform/media/Conversion.h"
#include "tests/platform/media/EncodedMedia.h"
#include "tests/platform/media/Sound.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

using namespace vocalith;
using namespace vocalith::test;

namespace {

namespace fs = std::filesystem;
using Kind = ConversionError::Kind;

std::ptrdiff_t filesIn(const fs::path& folder)
{
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

unsigned permissionsOf(const fs::path& file)
{
    struct stat status {};
    ::stat(file.c_str(), &status);
    return status.st_mode & 0777U;
}

/// An hour of silence that takes no space on the disk.
void writeHour(const fs::path& file)
{
    const WavForm form{.rate = 48000, .channels = 2};
    constexpr std::uint32_t kBytes = 3600U * 48000 * 4;
    writeFile(file, wavHeader(form, kBytes));
    fs::resize_file(file, 44 + kBytes);
}

/// While it lives no file may grow beyond `bytes`, as on a full disk.
class DiskFull {
public:
    explicit DiskFull(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{.rlim_cur = bytes, .rlim_max = m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    DiskFull(const DiskFull&) = delete;
    DiskFull& operator=(const DiskFull&) = delete;
    ~DiskFull()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

class Output : public testing::Test {
protected:
    TemporaryFolder m_input;
    TemporaryFolder m_output;
    FFmpegPCMConverter m_converter;
};

TEST_F(Output, TheAudioOfAVideoBecomesAValidWavFile)
{
    const auto video = m_input / "talk.mp4";
    const auto wav = m_output / "talk.wav";
    writeMedia(video, {.muxer = "mp4", .audioEncoder = "aac", .video = true}, 3);
    const auto seconds = m_converter.extractAudio(video, wav, {}, {});
    ASSERT_TRUE(seconds) << seconds.error().detail;
    EXPECT_NEAR(*seconds, 3, 0.1);

    const auto bytes = readFile(wav);
    const auto dataBytes = static_cast<std::uint32_t>(bytes.size() - 44);
    EXPECT_EQ(bytes.substr(0, 44), wavHeader({.rate = 16000}, dataBytes));
    EXPECT_DOUBLE_EQ(dataBytes / 32000.0, *seconds);
    EXPECT_NEAR(measure(converted(wav).value(), 440).amplitude, 0.5, 0.01);
    EXPECT_EQ(permissionsOf(wav), 0600u) << "others can read what the user said";
    EXPECT_EQ(filesIn(m_output.path()), 1);
}

TEST_F(Output, AFileMayBeReplacedByItsOwnAudio)
{
    const auto file = m_output / "take.wav";
    writeFile(file, wavOfTone({.rate = 48000, .channels = 2}, 1));
    EXPECT_EQ(m_converter.extractAudio(file, file, {}, {}).value_or(0), 1);
    EXPECT_EQ(fs::file_size(file), 44u + 32000);
}

TEST_F(Output, AnUploadIsTheRecordingItselfOrANewSmallM4A)
{
    const auto recording = m_input / "take.wav";
    writeFile(recording, wavOfTone({.rate = 16000}, 10));
    EXPECT_EQ(m_converter.compressForUpload(recording, AudioUploadCompression::none, m_output.path(), {}).value(),
              recording);
    EXPECT_EQ(filesIn(m_output.path()), 0);

    const auto first = m_converter.compressForUpload(recording, AudioUploadCompression::m4a, m_output.path(), {});
    const auto second = m_converter.compressForUpload(recording, AudioUploadCompression::m4a, m_output.path(), {});
    ASSERT_TRUE(first) << first.error().detail;
    EXPECT_NE(*first, second.value());
    EXPECT_EQ(first->parent_path(), m_output.path());
    EXPECT_EQ(first->extension(), ".m4a");
    EXPECT_EQ(readFile(*first).substr(4, 8), "ftypM4A ");
    EXPECT_EQ(permissionsOf(*first), 0600u);
    EXPECT_LT(fs::file_size(*first) * 4, fs::file_size(recording));
    const auto sound = measure(converted(*first).value(), 440);
    EXPECT_NEAR(sound.seconds, 10, 0.1);
    EXPECT_NEAR(sound.amplitude, 0.5, 0.01);
    EXPECT_EQ(filesIn(m_output.path()), 2);
}

TEST_F(Output, AFailureLeavesNothingBehindAndKeepsTheOlderFile)
{
    const auto text = m_input / "text.wav";
    const auto recording = m_input / "take.wav";
    const auto older = m_output / "older.wav";
    writeFile(text, "no sound");
    writeFile(recording, wavOfTone({.rate = 16000}, 20));
    writeFile(older, "older");
    const auto extract = [&](const fs::path& from, const fs::path& to) {
        return m_converter.extractAudio(from, to, {}, {}).error();
    };
    const auto compress = [&](const fs::path& from, const fs::path& folder) {
        return m_converter.compressForUpload(from, AudioUploadCompression::m4a, folder, {}).error();
    };
    EXPECT_EQ(extract(text, older).kind, Kind::notMedia);
    EXPECT_EQ(compress(text, m_output.path()).kind, Kind::notMedia);
    EXPECT_EQ(extract(recording, m_output / "no such folder" / "a.wav").kind, Kind::writeFailed);
    EXPECT_EQ(compress(recording, m_output / "no such folder").kind, Kind::writeFailed);
    {
        const DiskFull disk(30'000);
        const auto error = extract(recording, older);
        EXPECT_EQ(error.kind, Kind::writeFailed);
        EXPECT_EQ(error.file, older);
        EXPECT_EQ(error.detail, "File too large") << "the system's reason is lost";
        EXPECT_EQ(compress(recording, m_output.path()).detail, "File too large");
    }
    EXPECT_EQ(readFile(older), "older");
    EXPECT_EQ(filesIn(m_output.path()), 1);
}

TEST_F(Output, ASoundTooLongForAWavFileIsRefusedInsteadOfWrittenWithAWrongSize)
{
    media::WavWriter writer(media::OutputFile::create(m_output / "long.wav").value(), 3000);
    const std::vector<float> second(1000);
    EXPECT_TRUE(writer.write(second));
    EXPECT_FALSE(writer.write(second));
    EXPECT_FALSE(writer.write(std::vector<float>(10))) << "a hole in the sound";
    EXPECT_FALSE(writer.finish());
    EXPECT_FALSE(fs::exists(m_output / "long.wav"));
}

TEST_F(Output, TheProgressRisesToOne)
{
    writeFile(m_input / "a", wavOfTone({.rate = 48000}, 20));
    writeMedia(m_input / "b", {.muxer = "adts", .audioEncoder = "aac"}, 20);
    writeMedia(m_input / "c", {.muxer = "mp4", .audioEncoder = "aac", .video = true}, 20);
    const auto lying = wavOfTone({.rate = 48000}, 20);
    writeFile(m_input / "d", lying.substr(0, lying.size() / 2));
    for (const char* name : {"a", "b", "c", "d"}) {
        SCOPED_TRACE(name);
        std::vector<double> reached;
        const auto keep = [&reached](double progress) { reached.push_back(progress); };
        ASSERT_TRUE(m_converter.extractAudio(m_input / name, m_output / "x.wav", keep, {}));
        EXPECT_GT(reached.size(), 20u);
        EXPECT_LE(reached.size(), 1000u);
        EXPECT_GE(reached.front(), 0);
        EXPECT_EQ(std::adjacent_find(reached.begin(), reached.end(), std::greater_equal<>()), reached.end());
        EXPECT_EQ(reached.back(), 1);
    }
}

TEST_F(Output, TheSinkEndsAConversionEarlyAsASuccess)
{
    writeHour(m_input / "hour.wav");
    int pieces = 0;
    const auto count =
        m_converter.convert(m_input / "hour.wav", [&pieces](std::span<const float>) { return ++pieces < 3; }, {}, {});
    EXPECT_EQ(pieces, 3);
    EXPECT_EQ(count.value_or(0), 3 * 16000);
}

TEST_F(Output, AStopFromAnotherThreadEndsAConversionAtOnce)
{
    writeHour(m_input / "hour.wav");
    StopSource stop;
    int pieces = 0;
    const auto sink = [&](std::span<const float>) {
        if (++pieces == 2)
            std::thread([&stop] { stop.request_stop(); }).join();
        return true;
    };
    auto result = m_converter.convert(m_input / "hour.wav", sink, {}, stop.get_token());
    ASSERT_FALSE(result);
    EXPECT_TRUE(result.error().cancelled);
    EXPECT_LE(pieces, 3);

    result = m_converter.convert(m_input / "hour.wav", sink, {}, stop.get_token());
    EXPECT_TRUE(result.error().cancelled) << "a call that starts stopped";
}

TEST_F(Output, AStopLeavesNoFileBehind)
{
    writeHour(m_input / "hour.wav");
    const auto stoppedOnceThereIsAFile = [&](StopSource& stop) {
        return std::thread([this, &stop] {
            while (filesIn(m_output.path()) == 0)
                std::this_thread::yield();
            stop.request_stop();
        });
    };
    StopSource stop;
    auto stopper = stoppedOnceThereIsAFile(stop);
    const auto extracted = m_converter.extractAudio(m_input / "hour.wav", m_output / "x.wav", {}, stop.get_token());
    stopper.join();
    EXPECT_TRUE(extracted.error().cancelled);
    EXPECT_EQ(filesIn(m_output.path()), 0);

    StopSource again;
    stopper = stoppedOnceThereIsAFile(again);
    const auto compressed = m_converter.compressForUpload(m_input / "hour.wav", AudioUploadCompression::m4a,
                                                          m_output.path(), again.get_token());
    stopper.join();
    EXPECT_TRUE(compressed.error().cancelled);
    EXPECT_EQ(filesIn(m_output.path()), 0);
}

} // namespace
