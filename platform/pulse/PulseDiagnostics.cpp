#include "platform/pulse/PulseDiagnostics.h"

#include "platform/pulse/PulseServerState_p.h"

#include <fmt/format.h>

#include <filesystem>

namespace vocalith {
namespace {

using State = Finding::State;

bool isInstalled(const char* program)
{
    std::error_code ignored;
    for (const auto* folder : {"/usr/bin", "/usr/local/bin", "/run/current-system/sw/bin"}) {
        if (std::filesystem::exists(std::filesystem::path(folder) / program, ignored))
            return true;
    }
    return false;
}

std::string howToStartAServer()
{
    if (isInstalled("pipewire-pulse"))
        return "systemctl --user start pipewire.socket pipewire-pulse.socket";
    if (isInstalled("pulseaudio"))
        return "pulseaudio --start";
    return "sudo apt install pipewire-pulse wireplumber && systemctl --user start pipewire.socket "
           "pipewire-pulse.socket wireplumber.service";
}

/// PipeWire calls itself "PulseAudio (on PipeWire 0.3.65)", with the version of the protocol that it speaks.
std::string nameOf(const PulseServerState& state)
{
    const auto pipeWire = state.serverName.find("PipeWire");
    if (pipeWire == std::string::npos)
        return fmt::format("PulseAudio {}", state.serverVersion);
    return state.serverName.substr(pipeWire, state.serverName.find(')', pipeWire) - pipeWire);
}

std::vector<Finding> findingsWithoutServer(const AudioInputError& error)
{
    const bool isRefused = error.kind == AudioInputError::Kind::permissionDenied;
    const std::string remedy =
        isRefused ? "rm ~/.config/pulse/cookie (the server writes a new one when it starts), then log in again; in a "
                    "sandbox, grant it access to the audio server"
                  : howToStartAServer();
    const std::string unknown = "Unknown as long as the audio server cannot be asked";
    return {{"Audio server", State::missing, error.detail, remedy},
            {"Microphone", State::missing, unknown, remedy},
            {"System audio", State::missing, unknown, remedy}};
}

Finding microphoneFinding(const PulseServerState& state)
{
    const auto source = state.sourceFor({AudioSource::microphone, {}});
    if (source && source->isMuted)
        return {"Microphone", State::limited, source->description + " is muted",
                "pactl set-source-mute @DEFAULT_SOURCE@ 0"};
    if (source)
        return {"Microphone", State::good, source->description, {}};
    const auto others = state.microphones();
    if (others.empty())
        return {"Microphone", State::missing, "No microphone is connected",
                "Connect a microphone; pactl list short sources shows whether the audio server sees it"};
    return {"Microphone", State::missing, "The default source is no microphone: " + source.error().detail,
            "pactl set-default-source " + others.front().id};
}

Finding systemAudioFinding(const PulseServerState& state)
{
    const auto monitor = state.sourceFor({AudioSource::systemAudio, {}});
    if (monitor)
        return {"System audio", State::good, monitor->description, {}};
    return {"System audio", State::missing, monitor.error().detail,
            "Connect a loudspeaker or headphones, or make an output: pactl load-module module-null-sink"};
}

} // namespace

PulseDiagnostics::PulseDiagnostics(Logger logger) : PulseDiagnostics(std::move(logger), {}, {})
{}

PulseDiagnostics::PulseDiagnostics(Logger logger, std::string server, PulseTimes times)
    : m_server(std::make_unique<PulseServer>(std::move(server), times, std::move(logger)))
{}

PulseDiagnostics::~PulseDiagnostics() = default;

Task<std::vector<Finding>> PulseDiagnostics::examine()
{
    const auto state = co_await askServer(*m_server);
    if (!state)
        co_return findingsWithoutServer(state.error());
    std::vector<Finding> findings;
    findings.push_back({"Audio server", State::good, nameOf(*state), {}});
    findings.push_back(microphoneFinding(*state));
    findings.push_back(systemAudioFinding(*state));
    co_return findings;
}

} // namespace vocalith
