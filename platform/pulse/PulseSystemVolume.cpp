#include "platform/pulse/PulseSystemVolume.h"

#include "platform/pulse/PulseMuting_p.h"

#include <future>

namespace vocalith {

PulseSystemVolume::PulseSystemVolume(std::filesystem::path noteFile, Logger logger)
    : PulseSystemVolume(std::move(noteFile), std::move(logger), {}, {})
{}

PulseSystemVolume::PulseSystemVolume(std::filesystem::path noteFile, Logger logger, std::string server,
                                     PulseTimes times)
    : m_server(std::make_unique<PulseServer>(std::move(server), times, std::move(logger))),
      m_muting(std::make_shared<PulseMuting>(*m_server, noteFile))
{
    std::error_code ignored;
    if (std::filesystem::exists(noteFile, ignored))
        m_server->loop().post([muting = m_muting] { muting->restoreNoted(); });
}

PulseSystemVolume::~PulseSystemVolume()
{
    if (m_hasMuted) {
        const auto done = std::make_shared<std::promise<void>>();
        m_server->loop().post([muting = m_muting, done] { muting->restoreThen([done] { done->set_value(); }); });
        done->get_future().wait_for(m_server->times().farewell);
    }
    m_server->loop().post([muting = m_muting] { muting->close(); });
}

void PulseSystemVolume::mute()
{
    m_hasMuted = true;
    m_server->loop().post([muting = m_muting] { muting->mute(); });
}

void PulseSystemVolume::restore()
{
    if (m_hasMuted)
        m_server->loop().post([muting = m_muting] { muting->restore(); });
}

} // namespace vocalith
