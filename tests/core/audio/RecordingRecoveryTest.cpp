#include "core/audio/RecordingRecovery.h"

#include "core/audio/WavFile.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <csignal>
#include <vector>

using namespace vocalith;
using namespace vocalith::test;
namespace fs = std::filesystem;

namespace {

constexpr auto kId = "6F1A2B3C-0D4E-4F5A-8B6C-7D8E9FA0B1C2";

class RecordingRecovery : public testing::Test {
protected:
    Result<RecoveredFile, RecordingRecoveryFailure> recover(std::int64_t startByte = 44)
    {
        return recoverRecording({m_abandoned.string(), startByte}, m_folder.path(), m_log.logger());
    }
    std::string recoveredAudio() const { return readFile(m_recovered).substr(kWavHeaderSize); }

    TemporaryFolder m_folder;
    RecordedLog m_log;
    fs::path m_abandoned = m_folder / (std::string("Vocalith-Stream-") + kId + ".wav");
    fs::path m_recovered = m_folder / (std::string("VocalithRecovered-") + kId + ".wav");
};

/// A file as it looks when the program was killed: header for `named` bytes, `audio` behind it.
std::string killedFile(const fs::path& scratch, std::size_t named, const std::string& audio)
{
    EXPECT_TRUE(WavWriter::create(scratch).value().append(std::vector<std::int16_t>(named / 2)));
    const auto header = readFile(scratch).substr(0, kWavHeaderSize);
    fs::remove(scratch);
    return header + audio;
}

TEST_F(RecordingRecovery, SavesEverySampleThatIsInTheFile)
{
    struct Case {
        const char* what;
        std::string file;
        std::int64_t startByte;
        std::string audio;
    };
    const auto scratch = m_folder / "scratch.wav";
    const Case cases[] = {
        {"as written", killedFile(scratch, 8, "aabbccdd"), 44, "aabbccdd"},
        {"killed between data and header", killedFile(scratch, 4, "aabbccdd"), 44, "aabbccdd"},
        {"header names more than is there", killedFile(scratch, 100, "aabbccdd"), 44, "aabbccdd"},
        {"half a sample", killedFile(scratch, 8, "aabbc"), 44, "aabb"},
        {"no header at all", std::string(44, '\0') + "aabb", 44, "aabb"},
        {"later start", killedFile(scratch, 8, "aabbccdd"), 48, "ccdd"},
        {"start between samples", killedFile(scratch, 8, "aabbccdd"), 47, "ccdd"},
        {"start within the header", killedFile(scratch, 8, "aabbccdd"), 0, "aabbccdd"},
        {"negative start", killedFile(scratch, 8, "aabbccdd"), -5, "aabbccdd"},
    };
    for (const auto& [what, file, startByte, audio] : cases) {
        writeFile(m_abandoned, file);
        writeFile(m_recovered.string() + ".part", "left by a recovery that was killed, too");
        const auto recovered = recover(startByte);
        ASSERT_TRUE(recovered) << what;
        EXPECT_EQ(recovered->path, m_recovered);
        EXPECT_EQ(recovered->id, Uuid::parse(kId));
        EXPECT_EQ(recovered->size, 44 + audio.size());
        EXPECT_DOUBLE_EQ(recovered->duration, static_cast<double>(audio.size()) / 32000);
        EXPECT_EQ(readWavHeader(m_recovered), (WavInfo{1, 16000, 16, 44, audio.size()})) << what;
        EXPECT_EQ(recoveredAudio(), audio) << what;
        EXPECT_FALSE(fs::exists(m_abandoned));
        EXPECT_FALSE(fs::exists(m_recovered.string() + ".part"));
    }
    EXPECT_TRUE(m_log.has(", size: 52, duration: 0.000, pcm=8"));
}

TEST_F(RecordingRecovery, EmptyFilesAreRemovedAndMissingOnesToldApart)
{
    for (const auto& content : {std::string(), std::string("RIFF"), killedFile(m_folder / "s.wav", 0, ""),
                                killedFile(m_folder / "s.wav", 0, "x")}) {
        writeFile(m_abandoned, content);
        EXPECT_EQ(recover().error(), RecordingRecoveryFailure::empty);
        EXPECT_FALSE(fs::exists(m_abandoned));
    }
    EXPECT_EQ(recover().error(), RecordingRecoveryFailure::fileMissing);
    fs::create_directory(m_abandoned);
    EXPECT_EQ(recover().error(), RecordingRecoveryFailure::fileMissing);
    EXPECT_TRUE(fs::exists(m_abandoned));
    EXPECT_FALSE(fs::exists(m_recovered));
}

TEST_F(RecordingRecovery, TheAbandonedFileIsKeptWhenTheNewOneCannotBeWritten)
{
    writeFile(m_abandoned, killedFile(m_folder / "s.wav", 8, "aabbccdd"));
    fs::create_directories(m_recovered / "in the way");
    EXPECT_EQ(recover().error(), RecordingRecoveryFailure::failed);
    EXPECT_TRUE(fs::exists(m_abandoned));
}

/// Another program that records into `file` until it is killed. Runs nothing but system calls after the fork.
class OtherRecorder {
public:
    explicit OtherRecorder(const fs::path& file)
    {
        EXPECT_EQ(::pipe(m_pipe.data()), 0);
        m_process = ::fork();
        if (m_process == 0)
            record(file);
    }
    /// Waits until it has written that many pieces, each of 100 samples.
    void awaitPieces(int count) const
    {
        char told = 0;
        for (int i = 0; i < count; ++i)
            EXPECT_EQ(::read(m_pipe[0], &told, 1), 1);
    }
    void kill() const
    {
        ::kill(m_process, SIGKILL);
        int status = 0;
        ::waitpid(m_process, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status));
    }

private:
    [[noreturn]] void record(const fs::path& file) const
    {
        auto writer = WavWriter::create(file);
        const std::array<std::int16_t, 100> piece{};
        while (writer && writer->append(piece))
            static_cast<void>(::write(m_pipe[1], "x", 1) == 1); // the pipe's size holds it back
        ::_exit(1);
    }

    std::array<int, 2> m_pipe{};
    ::pid_t m_process = 0;
};

TEST_F(RecordingRecovery, LeavesALiveRecordingAloneAndSavesAKilledOne)
{
    const OtherRecorder other(m_abandoned);
    other.awaitPieces(50);
    EXPECT_EQ(recover().error(), RecordingRecoveryFailure::stillRecording);
    EXPECT_TRUE(fs::exists(m_abandoned));
    EXPECT_TRUE(
        m_log.has("Cannot recover recording " + m_abandoned.string() + ": This recording is still in progress."));

    other.kill();
    const auto header = readWavHeader(m_abandoned);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->dataBytes % 200, 0U);
    EXPECT_LE(kWavHeaderSize + header->dataBytes, fs::file_size(m_abandoned));
    EXPECT_GE(kWavHeaderSize + header->dataBytes + 200, fs::file_size(m_abandoned))
        << "more than one append is missing";
    const auto recovered = recover();
    ASSERT_TRUE(recovered);
    EXPECT_GE(recovered->size, 44U + 50 * 200);
}

} // namespace
