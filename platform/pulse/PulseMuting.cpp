#include "platform/pulse/PulseMuting_p.h"

#include "base/AtomicFile.h"

#include <system_error>

namespace vocalith {
namespace {

/// PipeWire learns late of what it was just asked for, and drops a request for what it believes to be so already: the
/// end of a silence that it has not heard of yet would do nothing.
constexpr std::chrono::seconds kHearsay(3);
constexpr std::chrono::milliseconds kAskAgain(50);
/// For an output that cannot be given back: its silence is held by others.
constexpr std::chrono::seconds kPersistence(10);

} // namespace

PulseMuting::PulseMuting(PulseServer& server, std::filesystem::path noteFile)
    : m_server(server), m_noteFile(std::move(noteFile))
{}

void PulseMuting::mute()
{
    m_wanted = true;
    proceed();
}

void PulseMuting::restore()
{
    m_wanted = false;
    proceed();
}

void PulseMuting::restoreNoted()
{
    const auto noted = readWholeFile(m_noteFile);
    if (!noted || noted->empty())
        return;
    m_server.logger().info("The output " + *noted + " was still silenced by an earlier run");
    m_silenced = *noted;
    proceed();
}

void PulseMuting::restoreThen(std::function<void()> done)
{
    m_done = std::move(done);
    restore();
}

void PulseMuting::close()
{
    m_asking.reset();
    m_askingAgain.stop();
    if (const auto connection = std::exchange(m_connection, nullptr))
        connection->remove(*this);
}

void PulseMuting::disconnected(const AudioInputError& error)
{
    m_server.logger().warning("Could not change the output volume: " + error.detail);
    close();
    tellDone();
}

void PulseMuting::proceed()
{
    if (m_wanted == m_silenced.has_value()) {
        if (!m_wanted) {
            close();
            tellDone();
        }
        return;
    }
    // Only a fresh connection knows which output is the default; the one to give back is known by its name.
    if (m_wanted && m_connection && !m_connection->isFresh())
        close();
    if (!m_connection) {
        const auto connection = m_wanted ? m_server.freshConnection() : m_server.connection();
        m_connection = connection;
        return connection->add(*this);
    }
    if (!m_connection->isReady())
        return;
    if (m_wanted) {
        askForOutput();
    } else {
        m_givingBackSince = std::chrono::steady_clock::now();
        giveBack();
    }
}

void PulseMuting::askForOutput()
{
    const auto answered = [](pa_context*, const pa_sink_info* output, int end, void* muting) {
        if (end == 0)
            static_cast<PulseMuting*>(muting)->outputKnown(output);
    };
    m_asking.reset(pa_context_get_sink_info_by_name(&m_connection->context(), "@DEFAULT_SINK@", answered, this));
}

void PulseMuting::outputKnown(const pa_sink_info* output)
{
    if (!m_wanted || m_silenced || output->mute != 0)
        return;
    m_silenced = output->name;
    m_silencedAt = std::chrono::steady_clock::now();
    m_wasSeenSilent = false;
    const auto noted = writeFileAtomically(m_noteFile, *m_silenced, Flush::later);
    if (!noted)
        m_server.logger().warning("The silenced output could not be noted: " + toString(noted.error()));
    m_asking.reset(
        pa_context_set_sink_mute_by_name(&m_connection->context(), m_silenced->c_str(), 1, nullptr, nullptr));
}

/// Until the server says that it is silent no more.
void PulseMuting::giveBack()
{
    const auto answered = [](pa_context*, const pa_sink_info* output, int end, void* muting) {
        if (end == 0)
            static_cast<PulseMuting*>(muting)->silencedOutputKnown(*output);
        else if (end < 0)
            static_cast<PulseMuting*>(muting)->givenBack(false);
    };
    m_askingAgain.stop();
    m_asking.reset(pa_context_get_sink_info_by_name(&m_connection->context(), m_silenced->c_str(), answered, this));
}

void PulseMuting::silencedOutputKnown(const pa_sink_info& output)
{
    const auto askAgain = [this] { m_connection->startTimer(m_askingAgain, kAskAgain, [this] { giveBack(); }); };
    if (output.mute == 0) {
        const bool isTrue = m_wasSeenSilent || std::chrono::steady_clock::now() - m_silencedAt > kHearsay;
        return isTrue ? givenBack(true) : askAgain();
    }
    if (std::chrono::steady_clock::now() - m_givingBackSince > kPersistence)
        return givenBack(false);
    m_wasSeenSilent = true;
    m_asking.reset(
        pa_context_set_sink_mute_by_name(&m_connection->context(), m_silenced->c_str(), 0, nullptr, nullptr));
    askAgain();
}

void PulseMuting::givenBack(bool good)
{
    if (!good) // it was unplugged, and with it went its silence, or somebody else keeps it silent
        m_server.logger().warning("The output " + *m_silenced + " could not be given back its volume");
    m_silenced.reset();
    std::error_code ignored;
    std::filesystem::remove(m_noteFile, ignored);
    proceed();
}

void PulseMuting::tellDone()
{
    if (const auto done = std::exchange(m_done, nullptr))
        done();
}

} // namespace vocalith
