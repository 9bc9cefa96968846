#pragma once

#include "base/StopToken.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <span>

namespace vocalith {

/// Samples on their way from the decoder's thread to the audio server's. It holds a few seconds of them, so that a long
/// recording is decoded only as fast as it is played.
class PlaybackQueue {
public:
    /// Waits while the queue is full. False once it was closed.
    bool push(std::span<const float> samples);
    /// Nothing more will be pushed.
    void finish();
    /// Takes what is there, at most as much as fits; yields how many samples that were.
    std::size_t pop(std::span<float> samples);
    /// Whether all was taken.
    bool isAtEnd() const;
    /// Lets go of who waits in `push`, and ends the decoder. Main thread.
    void close();
    /// Requested by `close`.
    StopToken closed() const { return m_closed.get_token(); }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_hasRoom;
    std::deque<float> m_samples;
    bool m_isFinished = false;
    StopSource m_closed;
};

} // namespace vocalith
