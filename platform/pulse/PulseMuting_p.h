#pragma once

#include "platform/pulse/PulseConnection_p.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace vocalith {

/// Silences the default output and gives it back. An output that is silenced is noted in a file first, so that a
/// program that was killed meanwhile gives it back when it starts again. Lives on the loop's thread.
class PulseMuting final : public PulseConnection::Client {
public:
    PulseMuting(PulseServer& server, std::filesystem::path noteFile);

    void mute();
    void restore();
    /// Gives back what an earlier program had silenced.
    void restoreNoted();
    /// Calls `done` once nothing is silenced any more, or cannot be given back.
    void restoreThen(std::function<void()> done);
    void close();

private:
    void connected() override { proceed(); }
    void disconnected(const AudioInputError& error) override;

    void proceed();
    void askForOutput();
    void outputKnown(const pa_sink_info* output);
    void giveBack();
    void silencedOutputKnown(const pa_sink_info& output);
    void givenBack(bool good);
    void tellDone();

    PulseServer& m_server;
    const std::filesystem::path m_noteFile;
    std::shared_ptr<PulseConnection> m_connection;
    PulseHandle<pa_operation> m_asking;
    bool m_wanted = false;
    std::optional<std::string> m_silenced; ///< the name of the output
    std::chrono::steady_clock::time_point m_silencedAt;
    std::chrono::steady_clock::time_point m_givingBackSince;
    bool m_wasSeenSilent = false; ///< by the server, as it says
    PulseTimer m_askingAgain;
    std::function<void()> m_done;
};

} // namespace vocalith
