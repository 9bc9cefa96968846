#pragma once

#include "platform/pulse/PlaybackQueue_p.h"
#include "platform/pulse/PulseConnection_p.h"
#include "ports/AudioPlayer.h"

#include <functional>
#include <string>

namespace vocalith {

/// One recording on its way to the default output, which it follows when the user chooses another. The main thread
/// holds it and lets the loop's thread, where everything else happens, start and close it.
class PulsePlayback final : public PulseConnection::Client {
public:
    using Ended = std::function<void(Result<double, AudioPlayerError>)>; ///< called on the loop's thread
    using Tell = std::function<void(double seconds)>;                    ///< called on the loop's thread

    /// `name` is what the user reads in a mixer.
    PulsePlayback(PulseServer& server, std::string name, std::shared_ptr<PlaybackQueue> queue, Ended ended, Tell tell);

    void start();
    void close();
    /// Hands over what is in the queue, as far as the server takes it.
    void pump();

private:
    void connected() override;
    void disconnected(const AudioInputError& error) override { fail(error); }

    void setCallbacks();
    void streamChanged();
    void drain();
    void askPosition();
    void positionKnown();
    void fail(const AudioInputError& error);
    void finish(Result<double, AudioPlayerError> outcome);
    double written() const;

    PulseServer& m_server;
    const std::string m_name;
    const std::shared_ptr<PlaybackQueue> m_queue;
    const Ended m_ended;
    const Tell m_tell;

    std::shared_ptr<PulseConnection> m_connection;
    PulseHandle<pa_stream> m_stream;
    PulseHandle<pa_operation> m_draining;
    PulseHandle<pa_operation> m_asking;
    PulseTimer m_limit; ///< until the server has accepted the stream
    PulseTimer m_tick;
    std::size_t m_writtenSamples = 0;
    double m_position = 0;
    pa_usec_t m_lastProgress = 0;
};

} // namespace vocalith
