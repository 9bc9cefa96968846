#pragma once

#include "base/OneShot.h"
#include "ports/AudioInput.h"

#include <map>
#include <mutex>
#include <optional>
#include <variant>

namespace vocalith::test {

/// The test's end of a capture that FakeAudioInput opened. It outlives the stream, and may be used on any thread: the
/// thread that pushes is the stream's thread. Calls after the stream was destroyed or has ended do nothing and yield
/// false.
class FakeCapture {
public:
    FakeCapture(AudioInputRequest request, AudioInputListener& listener);

    const AudioInputRequest& request() const { return m_request; }
    bool isAlive() const; ///< the stream was not destroyed; it may have ended

    bool push(std::span<const std::int16_t> samples);
    bool pushSilence(std::chrono::milliseconds length);
    bool end();                       ///< a finite source is at its end
    bool fail(AudioInputError error); ///< the stream is lost

private:
    friend class FakeAudioInput;
    void destroyed();
    bool finish(Result<void, AudioInputError> reason);

    const AudioInputRequest m_request;
    mutable std::mutex m_mutex; // held while the listener is called, so that none is running once the stream is gone
    AudioInputListener* m_listener;
    bool m_ended = false;
};

/// An AudioInput without a machine behind it. Main thread only; it outlives the tasks that it gave out.
class FakeAudioInput final : public AudioInput {
public:
    FakeAudioInput();
    ~FakeAudioInput() override;

    Task<Result<std::vector<AudioDevice>, AudioInputError>> microphones() override;
    Task<Result<std::unique_ptr<AudioInputStream>, AudioInputError>> open(AudioInputRequest request,
                                                                          AudioInputListener& listener) override;

    /// What is plugged in: one default microphone at first. With no microphone, or a name that is not there, opening
    /// yields noDevice.
    void setMicrophones(std::vector<AudioDevice> microphones) { m_microphones = std::move(microphones); }
    void setSystemAudioExists(bool exists) { m_hasSystemAudio = exists; }

    /// Every request fails with `error` until it is set to nothing again.
    void setError(std::optional<AudioInputError> error) { m_error = std::move(error); }
    /// Opening that one source fails with `error` until it is set to nothing again.
    void setOpenError(AudioSource source, std::optional<AudioInputError> error);

    /// From now on `open` waits until `releaseOpens`, or until it is cancelled.
    void holdOpens() { m_holds = true; }
    void releaseOpens();

    const std::vector<AudioInputRequest>& requests() const { return m_requests; }
    /// Every capture that was ever opened, in order.
    const std::vector<std::shared_ptr<FakeCapture>>& captures() const { return m_captures; }
    /// The capture of that source that was opened last, or null. Any thread.
    std::shared_ptr<FakeCapture> capture(AudioSource source = AudioSource::microphone) const;
    std::size_t aliveStreams() const;

private:
    class Stream;
    std::optional<AudioInputError> refusal(const AudioInputRequest& request) const;

    std::vector<AudioDevice> m_microphones;
    bool m_hasSystemAudio = true;
    std::optional<AudioInputError> m_error;
    std::map<AudioSource, AudioInputError> m_openErrors;
    bool m_holds = false;
    std::vector<OneShot<std::monostate>::Resolver> m_held;
    std::vector<AudioInputRequest> m_requests;
    mutable std::mutex m_capturesMutex; // for those who push on other threads
    std::vector<std::shared_ptr<FakeCapture>> m_captures;
};

} // namespace vocalith::test
