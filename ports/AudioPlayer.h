#pragma once

#include "base/Result.h"
#include "base/Task.h"

#include <filesystem>
#include <functional>
#include <string>

namespace vocalith {

struct AudioPlayerError {
    enum class Kind {
        noServer,         ///< no audio server answers
        permissionDenied, ///< the server refuses this client
        noDevice,         ///< there is no output
        serverLost,       ///< the server went away in the middle, or does not play any more
        sourceUnreadable, ///< the file gives no sound; `detail` is the sentence for the user
        failed,           ///< anything else; `detail` says what
        cancelled
    };
    Kind kind = Kind::failed;
    std::string detail{};
    bool operator==(const AudioPlayerError&) const = default;
};

/// The sentence that is shown to the user: what is wrong and what to do about it.
std::string userMessage(const AudioPlayerError& error);

/// Plays recordings for people to listen to. Main thread; it outlives its tasks.
class AudioPlayer {
public:
    /// Gets the position in seconds from the beginning, rising, several times a second. Main thread.
    using PositionHandler = std::function<void(double seconds)>;

    virtual ~AudioPlayer() = default;

    /// Plays the first audio track of any audio or video file on the default output, one file at a time. Yields, once
    /// the last of it was heard, how many seconds that were. A stop falls silent at once. Memory is bounded whatever
    /// the file's length.
    virtual Task<Result<double, AudioPlayerError>> play(std::filesystem::path file, PositionHandler position) = 0;
};

} // namespace vocalith
