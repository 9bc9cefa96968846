#pragma once

#include "base/OneShot.h"
#include "platform/pulse/PulseServerState_p.h"

#include <mutex>

namespace vocalith {

/// The listener as the loop's thread sees it: it can be taken away at any moment, and is told of the end once.
class PulseListener {
public:
    explicit PulseListener(AudioInputListener& listener) : m_listener(&listener) {}

    void samplesArrived(std::span<const std::int16_t> samples);
    void ended(Result<void, AudioInputError> reason);
    /// Any thread. Once this returns the listener is not called any more.
    void release();

private:
    std::mutex m_mutex; // held while the listener is called
    AudioInputListener* m_listener;
};

/// One capture: finds the source that serves the request, records from it, and follows the default where that was
/// asked for. The main thread holds it and lets the loop's thread, where everything else happens, start and close it.
///
/// Streams are never moved by the server (PipeWire would move them silently to whatever is left, a monitor even).
/// Instead the capture looks at the server's state whenever that changes, and attaches a new stream to another source
/// itself. What that costs in time is filled with silence.
class PulseCapture final : public PulseConnection::Client {
public:
    using Accepted = OneShot<Result<void, AudioInputError>>::Resolver;

    PulseCapture(PulseServer& server, AudioInputRequest request, AudioInputListener& listener);

    void start(Accepted accepted);
    void close();
    /// Any thread, see PulseListener.
    void releaseListener() { m_listener.release(); }

private:
    void connected() override;
    void disconnected(const AudioInputError& error) override { finish(error); }
    void devicesChanged() override { look(); }

    void look();
    void surveyed(const PulseServerState& state);
    bool isAttachedWell(const PulseServerState& state) const;
    void attach(const PulseSource& source);
    void detach();
    void setCallbacks();
    void streamChanged();
    void streamReady();
    void streamFailed();
    void awaitReplacement(std::string whatHappened);
    void readData();
    void deliver(const std::int16_t* samples, std::size_t count);
    void deliverSilence(std::size_t count);
    void watch();
    void finish(AudioInputError error);

    PulseServer& m_server;
    const AudioInputRequest m_request;
    PulseListener m_listener;

    std::optional<Accepted> m_accepted; ///< until the server has accepted the capture
    std::shared_ptr<PulseConnection> m_connection;
    std::shared_ptr<PulseInquiry> m_inquiry;
    bool m_lookAgain = false;

    PulseHandle<pa_stream> m_stream;
    std::string m_source;       ///< what m_stream records from, or is to
    std::string m_failedSource; ///< gave its stream up, although it may still be listed
    bool m_wasMoved = false;
    pa_usec_t m_attachedAt = 0;
    pa_usec_t m_lastData = 0;  ///< 0 until m_stream gave some
    pa_usec_t m_coveredTo = 0; ///< the time up to which samples were delivered
    bool m_hasGap = true;      ///< time may have passed since then for which the server gives no samples
    PulseTimer m_answerLimit;
    PulseTimer m_replacementLimit;
    PulseTimer m_watchdog;
};

} // namespace vocalith
