#include "platform/pulse/PulseAudioInput.h"

#include "platform/pulse/PulseCapture_p.h"

namespace vocalith {
namespace {

class PulseStream final : public AudioInputStream {
public:
    PulseStream(PulseServer& server, std::shared_ptr<PulseCapture> capture)
        : m_server(server), m_capture(std::move(capture))
    {}
    PulseStream(const PulseStream&) = delete;
    PulseStream& operator=(const PulseStream&) = delete;
    ~PulseStream() override
    {
        m_capture->releaseListener();
        m_server.loop().post([capture = std::move(m_capture)] { capture->close(); });
    }

private:
    PulseServer& m_server;
    std::shared_ptr<PulseCapture> m_capture;
};

} // namespace

PulseAudioInput::PulseAudioInput(Logger logger) : PulseAudioInput(std::move(logger), {}, {})
{}

PulseAudioInput::PulseAudioInput(Logger logger, std::string server, PulseTimes times)
    : m_server(std::make_unique<PulseServer>(std::move(server), times, std::move(logger)))
{}

PulseAudioInput::~PulseAudioInput() = default;

Task<Result<std::vector<AudioDevice>, AudioInputError>> PulseAudioInput::microphones()
{
    const auto state = co_await askServer(*m_server);
    if (!state)
        co_return failure(state.error());
    co_return state->microphones();
}

Task<Result<std::unique_ptr<AudioInputStream>, AudioInputError>> PulseAudioInput::open(AudioInputRequest request,
                                                                                       AudioInputListener& listener)
{
    OneShot<Result<void, AudioInputError>> accepted;
    const auto capture = std::make_shared<PulseCapture>(*m_server, std::move(request), listener);
    // Made before the answer is there: whatever happens, dropping it ends the capture.
    std::unique_ptr<AudioInputStream> stream = std::make_unique<PulseStream>(*m_server, capture);
    m_server->loop().post([capture, resolve = accepted.resolver()] { capture->start(resolve); });
    const auto outcome = co_await accepted;
    if (!outcome)
        co_return failure(AudioInputError{AudioInputError::Kind::failed, "cancelled"});
    if (!*outcome)
        co_return failure(outcome->error());
    co_return stream;
}

} // namespace vocalith
