#pragma once

#include "core/audio/AudioRecordingManager.h"
#include "core/audio/WavFile.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeAudioInput.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>

namespace vocalith::test {

/// Consecutive numbers: a sample that is missing, or there twice, shows.
inline std::vector<std::int16_t> ramp(std::size_t count, std::int16_t from = 1)
{
    std::vector<std::int16_t> samples(count);
    std::iota(samples.begin(), samples.end(), from);
    return samples;
}

inline std::vector<std::int16_t> samplesOf(const std::string& bytes)
{
    std::vector<std::int16_t> samples(bytes.size() / 2);
    std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
    return samples;
}

/// A recording manager with a fake input, and what it leaves behind.
class AudioRecordingFixture : public testing::Test {
protected:
    Result<void, AudioRecordingFailure> start(RecordingRequest request = {}) { return await(m_manager.start(request)); }
    std::shared_ptr<FakeCapture> microphone() { return m_input.capture(); }
    std::filesystem::path file(const std::string& name) const { return m_recordings / name; }
    std::vector<std::int16_t> recorded(const FinishedRecording& recording) const
    {
        return samplesOf(readFile(*filePath(recording.audioFile.fileBookmark)).substr(kWavHeaderSize));
    }
    std::size_t fileCount() const
    {
        return std::filesystem::exists(m_recordings)
                   ? static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_recordings),
                                                            std::filesystem::directory_iterator()))
                   : 0;
    }
    void expectNothingLeft()
    {
        EXPECT_EQ(fileCount(), 0U);
        EXPECT_EQ(m_storage.crashRecoveryInfo.get(), std::nullopt);
        EXPECT_FALSE(m_storage.storedIsRecording.get());
        EXPECT_EQ(m_clock.pendingTimers(), 0U);
        EXPECT_EQ(m_input.aliveStreams(), 0U);
        EXPECT_FALSE(m_manager.isRecording());
    }

    TemporaryFolder m_folder;
    RecordedLog m_log;
    FakeClock m_clock;
    FakeAudioInput m_input;
    std::filesystem::path m_recordings = m_folder / "VocalithRecordings";
    PersistentAppStorage m_storage{m_folder / "settings.json", m_clock, m_log.logger()};
    AudioRecordingManager m_manager{m_input, m_storage, m_clock, m_recordings, m_log.logger()};
    const Uuid m_id = Uuid::random();
};

} // namespace vocalith::test
