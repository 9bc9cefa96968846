#pragma once

#include "tests/support/SessionBus.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace vocalith::test {

/// The feeding end of a microphone made of a pipe. Any one thread.
class PipeMicrophone {
public:
    explicit PipeMicrophone(const std::filesystem::path& pipe);
    PipeMicrophone(PipeMicrophone&& other) noexcept;
    PipeMicrophone& operator=(PipeMicrophone&&) = delete;
    ~PipeMicrophone();

    /// Waits while the pipe is full, for at most ten seconds; yields whether all was taken. PulseAudio takes it as fast
    /// as it comes, PipeWire in real time.
    bool feed(std::span<const std::int16_t> samples) const;
    /// What the pipe takes at once; the rest is thrown away.
    void offer(std::span<const std::int16_t> samples) const;

private:
    int m_pipe = -1;
};

/// An audio server of the test's own, with a private home, run-time folder and bus, and one null sink "speaker", which
/// is the default. It has no microphone at first. Needs the main thread's event loop.
class AudioServer {
public:
    enum class Kind { pulseAudio, pipeWire };

    explicit AudioServer(Kind kind);

    Kind kind() const { return m_kind; }
    const std::string& address() const { return m_address; } ///< for PULSE_SERVER

    /// What `pactl` with these arguments prints, without the last line end. Its failure fails the test.
    std::string pactl(std::vector<std::string> arguments) const;

    /// Adds a source of that name at 16 kHz mono that a pipe feeds. The first one becomes the default source.
    PipeMicrophone addMicrophone(const std::string& name);
    void addSink(const std::string& name);
    /// Takes away what was added, as pulling the plug does.
    void remove(const std::string& name);
    void setDefaultSource(const std::string& name);
    void setDefaultSink(const std::string& name);
    /// Starts to play 16 kHz mono samples into the sink.
    void play(const std::string& sink, std::span<const std::int16_t> samples);
    void stopPlaying();
    /// Opens a second way in on a port of this machine, where a client needs the server's secret. PulseAudio only;
    /// yields its address.
    std::string addGuardedAddress() const;
    /// The number of connections that this program has to it.
    int connections() const;
    int recordings() const; ///< the number of streams that record

    void kill();   ///< ends the server that clients are connected to, without a good-bye
    void freeze(); ///< it stays there and does nothing
    void thaw();

private:
    void startPulseAudio();
    void startPipeWire();
    void waitForDefault(const std::string& what, const std::string& name) const;
    /// Once a wait was in vain none waits any more: the server is not what the test needs.
    void waitUntil(const std::function<bool()>& condition) const;
    std::size_t lines(std::vector<std::string> arguments) const;
    int run(std::vector<std::string> command, const std::filesystem::path& output) const;

    const Kind m_kind;
    TemporaryFolder m_folder;
    SessionBus m_bus;
    std::string m_address;
    std::vector<std::string> m_environment;
    std::vector<ChildProcess> m_background; ///< daemon and session manager of PipeWire
    ChildProcess m_server;
    bool m_hasMicrophone = false;
    mutable bool m_isBroken = false;
    std::vector<std::pair<std::string, std::string>> m_modules; ///< device and the module that made it
    std::vector<ChildProcess> m_players;
};

} // namespace vocalith::test
