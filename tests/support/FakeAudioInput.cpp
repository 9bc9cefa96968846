#include "tests/support/FakeAudioInput.h"

#include <algorithm>

namespace vocalith::test {

FakeCapture::FakeCapture(AudioInputRequest request, AudioInputListener& listener)
    : m_request(std::move(request)), m_listener(&listener)
{}

bool FakeCapture::isAlive() const
{
    const std::lock_guard lock(m_mutex);
    return m_listener != nullptr;
}

bool FakeCapture::push(std::span<const std::int16_t> samples)
{
    const std::lock_guard lock(m_mutex);
    if (!m_listener || m_ended)
        return false;
    m_listener->samplesArrived(samples);
    return true;
}

bool FakeCapture::pushSilence(std::chrono::milliseconds length)
{
    return push(std::vector<std::int16_t>(static_cast<std::size_t>(length.count()) * kAudioSampleRate / 1000));
}

bool FakeCapture::end()
{
    return finish({});
}

bool FakeCapture::fail(AudioInputError error)
{
    return finish(failure(std::move(error)));
}

bool FakeCapture::finish(Result<void, AudioInputError> reason)
{
    const std::lock_guard lock(m_mutex);
    if (!m_listener || m_ended)
        return false;
    m_ended = true;
    m_listener->streamEnded(std::move(reason));
    return true;
}

void FakeCapture::destroyed()
{
    const std::lock_guard lock(m_mutex);
    m_listener = nullptr;
}

class FakeAudioInput::Stream final : public AudioInputStream {
public:
    explicit Stream(std::shared_ptr<FakeCapture> capture) : m_capture(std::move(capture)) {}
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() override { m_capture->destroyed(); }

private:
    std::shared_ptr<FakeCapture> m_capture;
};

FakeAudioInput::FakeAudioInput() : m_microphones{{"fake.microphone", "Fake Microphone", true}}
{}
FakeAudioInput::~FakeAudioInput() = default;

Task<Result<std::vector<AudioDevice>, AudioInputError>> FakeAudioInput::microphones()
{
    if (m_error)
        co_return failure(*m_error);
    auto microphones = m_microphones;
    std::stable_partition(microphones.begin(), microphones.end(), std::mem_fn(&AudioDevice::isDefault));
    co_return microphones;
}

Task<Result<std::unique_ptr<AudioInputStream>, AudioInputError>> FakeAudioInput::open(AudioInputRequest request,
                                                                                      AudioInputListener& listener)
{
    m_requests.push_back(request);
    const auto stop = co_await currentStopToken();
    if (m_holds || stop.stop_requested()) {
        OneShot<std::monostate> released;
        m_held.push_back(released.resolver());
        const auto outcome = co_await released;
        if (!outcome)
            co_return failure(AudioInputError{AudioInputError::Kind::failed, "cancelled"});
    }
    if (const auto error = refusal(request))
        co_return failure(*error);
    const auto capture = std::make_shared<FakeCapture>(std::move(request), listener);
    {
        const std::lock_guard lock(m_capturesMutex);
        m_captures.push_back(capture);
    }
    co_return std::make_unique<Stream>(capture);
}

std::optional<AudioInputError> FakeAudioInput::refusal(const AudioInputRequest& request) const
{
    using Kind = AudioInputError::Kind;
    if (m_error)
        return m_error;
    if (const auto error = m_openErrors.find(request.source); error != m_openErrors.end())
        return error->second;
    if (request.source == AudioSource::systemAudio) {
        if (!request.deviceId.empty())
            return AudioInputError{Kind::unsupported, "system audio has no devices to choose from"};
        return m_hasSystemAudio ? std::nullopt : std::optional(AudioInputError{Kind::noDevice, "no sink"});
    }
    const bool exists = std::ranges::any_of(m_microphones, [&](const AudioDevice& microphone) {
        return request.deviceId.empty() || microphone.id == request.deviceId;
    });
    return exists ? std::nullopt : std::optional(AudioInputError{Kind::noDevice, "no microphone " + request.deviceId});
}

void FakeAudioInput::setOpenError(AudioSource source, std::optional<AudioInputError> error)
{
    if (error)
        m_openErrors[source] = *std::move(error);
    else
        m_openErrors.erase(source);
}

void FakeAudioInput::releaseOpens()
{
    m_holds = false;
    for (const auto& resolve : std::exchange(m_held, {}))
        resolve({});
}

std::shared_ptr<FakeCapture> FakeAudioInput::capture(AudioSource source) const
{
    const std::lock_guard lock(m_capturesMutex);
    const auto last = std::find_if(m_captures.rbegin(), m_captures.rend(),
                                   [source](const auto& capture) { return capture->request().source == source; });
    return last == m_captures.rend() ? nullptr : *last;
}

std::size_t FakeAudioInput::aliveStreams() const
{
    return static_cast<std::size_t>(
        std::ranges::count_if(m_captures, [](const auto& capture) { return capture->isAlive(); }));
}

} // namespace vocalith::test
