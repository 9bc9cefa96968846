#pragma once

#include "base/Clock.h"
#include "base/TaskScope.h"
#include "core/audio/AudioRecordingManager.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <filesystem>
#include <list>

namespace vocalith::bench {

/// A clock that moves only when it is told to.
class SteppedClock final : public Clock {
public:
    Date now() const override { return Date{} + std::chrono::duration_cast<std::chrono::milliseconds>(m_passed); }
    Instant instant() const override { return Instant{} + m_passed; }
    Timer after(Duration delay, std::function<void()> action) override
    {
        m_timers.push_back({m_passed + delay, std::move(action)});
        return Timer(std::make_unique<Armed>(m_timers, std::prev(m_timers.end())));
    }
    void advance(Duration by)
    {
        m_passed += by;
        for (auto& timer : m_timers) { // also those that an action adds
            if (timer.action && timer.due <= m_passed)
                std::exchange(timer.action, nullptr)();
        }
        m_timers.remove_if([](const Entry& entry) { return !entry.armed; });
    }

private:
    struct Entry {
        Duration due;
        std::function<void()> action;
        bool armed = true;
    };
    struct Armed final : Timer::Pending {
        Armed(std::list<Entry>&, std::list<Entry>::iterator timer) : m_timer(timer) {}
        Armed(const Armed&) = delete;
        Armed& operator=(const Armed&) = delete;
        ~Armed() override
        {
            m_timer->action = nullptr;
            m_timer->armed = false;
        }
        std::list<Entry>::iterator m_timer;
    };

    Duration m_passed{};
    std::list<Entry> m_timers;
};

/// Captures that the benchmark feeds itself.
class FedAudioInput final : public AudioInput {
public:
    Task<Result<std::vector<AudioDevice>, AudioInputError>> microphones() override
    {
        co_return std::vector<AudioDevice>();
    }
    Task<Result<std::unique_ptr<AudioInputStream>, AudioInputError>> open(AudioInputRequest request,
                                                                          AudioInputListener& listener) override
    {
        (request.source == AudioSource::microphone ? microphone : systemAudio) = &listener;
        co_return std::make_unique<AudioInputStream>();
    }

    AudioInputListener* microphone = nullptr;
    AudioInputListener* systemAudio = nullptr;
};

/// A recording manager that records into a folder of its own, which goes when it does.
struct RecordingBench {
    explicit RecordingBench(RecordingMode mode, bool streaming) { scope.start(begin(mode, streaming)); }
    RecordingBench(const RecordingBench&) = delete;
    RecordingBench& operator=(const RecordingBench&) = delete;
    ~RecordingBench()
    {
        scope.start(manager.cancel());
        std::filesystem::remove_all(folder);
    }

    Task<void> begin(RecordingMode mode, bool streaming)
    {
        RecordingRequest request{Uuid::random(), mode, streaming};
        const auto result = co_await manager.start(request);
        started = result.has_value();
    }

    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("vocalith-bench-" + Uuid::random().toString());
    SteppedClock clock;
    FedAudioInput input;
    PersistentAppStorage storage{folder / "settings.json", clock, Logger()};
    AudioRecordingManager manager{input, storage, clock, folder / "VocalithRecordings", Logger()};
    TaskScope scope;
    bool started = false;
};

} // namespace vocalith::bench
