#include "platform/pulse/PulseServerState_p.h"

#include "base/OneShot.h"

#include <algorithm>
#include <functional>

namespace vocalith {
namespace {

using Kind = AudioInputError::Kind;

std::string text(const char* value)
{
    return value ? value : "";
}

} // namespace

const PulseSource* PulseServerState::source(const std::string& name) const
{
    const auto found = std::ranges::find(sources, name, &PulseSource::name);
    return found == sources.end() ? nullptr : &*found;
}

std::vector<AudioDevice> PulseServerState::microphones() const
{
    std::vector<AudioDevice> microphones;
    for (const auto& source : sources) {
        if (!source.isMonitor)
            microphones.push_back({source.name, source.description, source.name == defaultSource});
    }
    std::stable_partition(microphones.begin(), microphones.end(), std::mem_fn(&AudioDevice::isDefault));
    return microphones;
}

Result<PulseSource, AudioInputError> PulseServerState::sourceFor(const AudioInputRequest& request) const
{
    if (request.source == AudioSource::systemAudio) {
        if (!request.deviceId.empty())
            return failure(AudioInputError{Kind::unsupported, "system audio has no devices to choose from"});
        const auto monitor = std::ranges::find_if(
            sources, [this](const PulseSource& source) { return source.isMonitor && source.monitorOf == defaultSink; });
        if (monitor == sources.end())
            return failure(AudioInputError{Kind::noDevice, "the default sink \"" + defaultSink + "\" has no monitor"});
        return *monitor;
    }
    const auto& wanted = request.deviceId.empty() ? defaultSource : request.deviceId;
    const auto* found = source(wanted);
    if (!found)
        return failure(AudioInputError{Kind::noDevice, "there is no source \"" + wanted + "\""});
    if (found->isMonitor)
        return failure(AudioInputError{Kind::noDevice, "\"" + wanted + "\" is a monitor and no microphone"});
    return *found;
}

PulseSurvey::PulseSurvey(const PulseConnection& connection, Done done) : m_done(std::move(done))
{
    auto* context = &connection.context();
    const auto server = [](pa_context*, const pa_server_info* info, void* survey) {
        static_cast<PulseSurvey*>(survey)->serverAnswered(info);
    };
    const auto source = [](pa_context*, const pa_source_info* info, int end, void* survey) {
        static_cast<PulseSurvey*>(survey)->sourceAnswered(info, end);
    };
    // The server answers in the order of the questions, so the last answer completes the state.
    m_askingServer.reset(pa_context_get_server_info(context, server, this));
    m_askingSources.reset(pa_context_get_source_info_list(context, source, this));
}

void PulseSurvey::serverAnswered(const pa_server_info* info)
{
    if (!info)
        return finish(false);
    m_state.serverName = text(info->server_name);
    m_state.serverVersion = text(info->server_version);
    m_state.defaultSource = text(info->default_source_name);
    m_state.defaultSink = text(info->default_sink_name);
}

void PulseSurvey::sourceAnswered(const pa_source_info* info, int end)
{
    if (end != 0)
        return finish(end > 0);
    m_state.sources.push_back({text(info->name), text(info->description), info->monitor_of_sink != PA_INVALID_INDEX,
                               text(info->monitor_of_sink_name), info->mute != 0});
}

void PulseSurvey::finish(bool good)
{
    const auto done = std::exchange(m_done, nullptr);
    if (done)
        done(good ? std::optional(std::move(m_state)) : std::nullopt);
}

void PulseInquiry::start()
{
    const auto connection = m_server.freshConnection();
    m_connection = connection;
    connection->add(*this);
}

void PulseInquiry::connected()
{
    m_connection->startTimer(m_limit, m_server.times().answer, [this] {
        m_connection->distrust();
        finish(failure(AudioInputError{Kind::serverLost, "the audio server does not answer"}));
    });
    m_survey.emplace(*m_connection, [this](std::optional<PulseServerState> state) {
        if (state)
            finish(*std::move(state));
        else
            finish(failure(m_connection->lastError()));
    });
}

void PulseInquiry::disconnected(const AudioInputError& error)
{
    finish(failure(error));
}

void PulseInquiry::finish(Result<PulseServerState, AudioInputError> answer)
{
    const auto told = std::exchange(m_answer, nullptr);
    close();
    if (told)
        told(std::move(answer));
}

void PulseInquiry::close()
{
    m_survey.reset();
    m_limit.stop();
    if (const auto connection = std::exchange(m_connection, nullptr))
        connection->remove(*this);
}

Task<Result<PulseServerState, AudioInputError>> askServer(PulseServer& server)
{
    OneShot<Result<PulseServerState, AudioInputError>> answered;
    const auto inquiry = std::make_shared<PulseInquiry>(server, answered.resolver());
    server.loop().post([inquiry] { inquiry->start(); });
    auto outcome = co_await answered;
    server.loop().post([inquiry] { inquiry->close(); });
    if (!outcome)
        co_return failure(AudioInputError{Kind::failed, "cancelled"});
    co_return *std::move(outcome);
}

} // namespace vocalith
