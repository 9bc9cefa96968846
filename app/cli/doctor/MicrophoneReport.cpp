#include "app/cli/doctor/MicrophoneReport.h"

#include "ports/AudioInput.h"

namespace vocalith {

Task<std::vector<Finding>> MicrophoneReport::examine()
{
    const auto microphones = co_await m_input.microphones();
    std::vector<Finding> findings;
    if (!microphones)
        co_return findings;
    for (const auto& each : *microphones)
        findings.push_back({"--microphone",
                            Finding::State::good,
                            each.id + " (" + each.name + (each.isDefault ? ", the default)" : ")"),
                            {}});
    co_return findings;
}

} // namespace vocalith
