#pragma once

#include "base/OneShot.h"
#include "ports/AudioPlayer.h"

#include <map>
#include <optional>
#include <vector>

namespace vocalith::test {

/// A player without loudspeakers, which takes no time. Main thread.
class FakeAudioPlayer final : public AudioPlayer {
public:
    /// The files that can be played and their lengths in seconds; any other is `sourceUnreadable`.
    std::map<std::filesystem::path, double> durations;
    /// When set, every call fails with it.
    std::optional<AudioPlayerError> error;
    /// From now on nothing comes to its end by itself.
    bool holds = false;

    Task<Result<double, AudioPlayerError>> play(std::filesystem::path file, PositionHandler position) override
    {
        m_played.push_back(file);
        if (error)
            co_return failure(*error);
        const auto known = durations.find(file);
        if (known == durations.end())
            co_return failure(AudioPlayerError{AudioPlayerError::Kind::sourceUnreadable,
                                               "\"" + file.string() + "\" cannot be played."});
        constexpr double kStep = 0.2; // seconds
        for (double at = kStep; position && at < known->second; at += kStep)
            position(at);
        if (holds) {
            OneShot<bool> never;
            const auto stopped = co_await never;
            static_cast<void>(stopped); // a stop is all that can come
            co_return failure(AudioPlayerError{AudioPlayerError::Kind::cancelled});
        }
        co_return known->second;
    }

    /// Every file that was asked for.
    const std::vector<std::filesystem::path>& played() const { return m_played; }

private:
    std::vector<std::filesystem::path> m_played;
};

} // namespace vocalith::test
