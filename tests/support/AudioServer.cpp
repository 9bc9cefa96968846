#include "tests/support/AudioServer.h"

#include "tests/support/LocalSocket.h"
#include "tests/support/MainLoop.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <utility>

namespace vocalith::test {

namespace fs = std::filesystem;

namespace {

std::span<const char> bytesOf(std::span<const std::int16_t> samples)
{
    return {reinterpret_cast<const char*>(samples.data()), samples.size_bytes()};
}

/// WirePlumber's configuration: the machine's own devices stay out of it. Where no logind runs, its part for Bluetooth
/// would end it.
constexpr const char* kNoBluetooth = "bluez_monitor.enabled = false\n";
constexpr const char* kNoHardware =
    "alsa_monitor.enabled = false\nv4l2_monitor.enabled = false\nlibcamera_monitor.enabled = false\n";

} // namespace

PipeMicrophone::PipeMicrophone(const fs::path& pipe) : m_pipe(open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC))
{
    EXPECT_GE(m_pipe, 0) << "nobody reads from " << pipe;
}

PipeMicrophone::PipeMicrophone(PipeMicrophone&& other) noexcept : m_pipe(std::exchange(other.m_pipe, -1))
{}

PipeMicrophone::~PipeMicrophone()
{
    if (m_pipe >= 0)
        close(m_pipe);
}

bool PipeMicrophone::feed(std::span<const std::int16_t> samples) const
{
    auto rest = bytesOf(samples);
    while (!rest.empty()) {
        const auto written = write(m_pipe, rest.data(), std::min(rest.size(), std::size_t{PIPE_BUF}));
        if (written > 0) {
            rest = rest.subspan(static_cast<std::size_t>(written));
            continue;
        }
        pollfd writable{m_pipe, POLLOUT, 0};
        if (errno != EAGAIN || poll(&writable, 1, 10'000) != 1)
            return false;
    }
    return true;
}

void PipeMicrophone::offer(std::span<const std::int16_t> samples) const
{
    const auto bytes = bytesOf(samples);
    [[maybe_unused]] const auto ignored = write(m_pipe, bytes.data(), std::min(bytes.size(), std::size_t{PIPE_BUF}));
}

AudioServer::AudioServer(Kind kind) : m_kind(kind)
{
    signal(SIGPIPE, SIG_IGN); // a microphone may be fed after its server has gone
    for (const auto* folder : {"home", "run"}) {
        fs::create_directory(m_folder / folder);
        fs::permissions(m_folder / folder, fs::perms::owner_all);
    }
    const auto run = (m_folder / "run").string();
    m_address = "unix:" + (m_folder / "run" / "pulse" / "native").string();
    m_environment = {"HOME=" + (m_folder / "home").string(), "XDG_RUNTIME_DIR=" + run, "PIPEWIRE_RUNTIME_DIR=" + run,
                     "PULSE_RUNTIME_PATH=" + run + "/pulse", "PULSE_SERVER=" + m_address,
                     // The machine's own buses stay out of it.
                     "DBUS_SESSION_BUS_ADDRESS=" + m_bus.address(), "DBUS_SYSTEM_BUS_ADDRESS=" + m_bus.address(),
                     "PATH=/usr/bin:/bin", "LC_ALL=C"};
    if (kind == Kind::pulseAudio)
        startPulseAudio();
    else
        startPipeWire();
    addSink("speaker");
    setDefaultSink("speaker");
}

void AudioServer::startPulseAudio()
{
    fs::create_directory(m_folder / "run" / "pulse");
    writeFile(m_folder / "server.pa", "load-module module-native-protocol-unix auth-anonymous=1 socket=" +
                                          (m_folder / "run" / "pulse" / "native").string() + "\n");
    // With its own PULSE_SERVER in the environment it would refuse to start.
    auto environment = m_environment;
    std::erase_if(environment, [](const auto& variable) { return variable.starts_with("PULSE_SERVER="); });
    // Where memory is shared, the server now and then ends itself over a block that a client has lent it.
    m_server = ChildProcess({"pulseaudio", "-n", "-F", (m_folder / "server.pa").string(), "--daemonize=no",
                             "--exit-idle-time=-1", "--use-pid-file=no", "--disable-shm"},
                            environment, m_folder / "server.log");
    waitUntil([this] { return run({"pactl", "info"}, m_folder / "ready") == 0; });
}

void AudioServer::startPipeWire()
{
    const auto configuration = m_folder / "home" / ".config" / "wireplumber";
    writeFile(configuration / "bluetooth.lua.d" / "60-test.lua", kNoBluetooth);
    writeFile(configuration / "main.lua.d" / "60-test.lua", kNoHardware);
    const auto start = [this](std::vector<std::string> command) {
        const auto log = m_folder / (command[0] + ".log");
        return ChildProcess(std::move(command), m_environment, log);
    };
    m_background.push_back(start({"pipewire"}));
    waitUntil([&] { return isListening(m_folder / "run" / "pipewire-0"); });
    m_background.push_back(start({"wireplumber"}));
    m_server = start({"pipewire-pulse"});
    // The sink that stands in for missing ones appears when all parts work together.
    waitUntil([this] {
        return run({"pactl", "get-default-sink"}, m_folder / "ready") == 0 &&
               readFile(m_folder / "ready").starts_with("auto_null");
    });
}

void AudioServer::waitUntil(const std::function<bool()>& condition) const
{
    if (m_isBroken || runUntil(condition))
        return;
    m_isBroken = true; // one long wait is enough
    for (const auto& file : fs::directory_iterator(m_folder.path())) {
        if (file.path().string().ends_with(".log.err"))
            ADD_FAILURE() << file.path().filename() << ": " << readFile(file.path());
    }
}

int AudioServer::run(std::vector<std::string> command, const fs::path& output) const
{
    return ChildProcess(std::move(command), m_environment, output).wait();
}

std::string AudioServer::pactl(std::vector<std::string> arguments) const
{
    arguments.insert(arguments.begin(), "pactl");
    const auto output = m_folder / "pactl";
    EXPECT_EQ(run(arguments, output), 0) << arguments[1] << ": " << readFile(output.string() + ".err");
    auto text = readFile(output);
    while (text.ends_with('\n'))
        text.pop_back();
    return text;
}

void AudioServer::waitForDefault(const std::string& what, const std::string& name) const
{
    waitUntil([&] { return pactl({"get-default-" + what}) == name; });
}

PipeMicrophone AudioServer::addMicrophone(const std::string& name)
{
    const auto pipe = m_folder / (name + ".pipe");
    const auto module =
        pactl({"load-module", "module-pipe-source", "source_name=" + name, "file=" + pipe.string(), "format=s16le",
               "rate=16000", "channels=1", "source_properties=device.description=" + name + "-description"});
    m_modules.emplace_back(name, module);
    waitUntil([&] { return pactl({"list", "short", "sources"}).find("\t" + name + "\t") != std::string::npos; });
    if (!std::exchange(m_hasMicrophone, true))
        setDefaultSource(name);
    return PipeMicrophone(pipe);
}

void AudioServer::addSink(const std::string& name)
{
    const auto module = pactl({"load-module", "module-null-sink", "sink_name=" + name, "rate=16000", "channels=1",
                               "sink_properties=device.description=" + name + "-description"});
    m_modules.emplace_back(name, module);
    waitUntil([&] {
        return pactl({"list", "short", "sources"}).find("\t" + name + ".monitor\t") != std::string::npos;
    });
}

void AudioServer::remove(const std::string& name)
{
    const auto made = std::ranges::find(m_modules, name, &std::pair<std::string, std::string>::first);
    ASSERT_NE(made, m_modules.end());
    pactl({"unload-module", made->second});
    m_modules.erase(made);
}

void AudioServer::setDefaultSource(const std::string& name)
{
    pactl({"set-default-source", name});
    waitForDefault("source", name);
}

void AudioServer::setDefaultSink(const std::string& name)
{
    pactl({"set-default-sink", name});
    waitForDefault("sink", name);
}

void AudioServer::play(const std::string& sink, std::span<const std::int16_t> samples)
{
    const auto file = m_folder / fmt::format("play-{}.raw", m_players.size());
    const auto bytes = bytesOf(samples);
    writeFile(file, {bytes.data(), bytes.size()});
    m_players.emplace_back(std::vector<std::string>{"pacat", "--playback", "--raw", "--format=s16le", "--rate=16000",
                                                    "--channels=1", "--latency-msec=300", "-d", sink, file.string()},
                           m_environment, file.string() + ".log");
}

void AudioServer::stopPlaying()
{
    m_players.clear();
}

std::string AudioServer::addGuardedAddress() const
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(bind(probe, reinterpret_cast<const sockaddr*>(&address), size), 0);
    getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
    close(probe);
    const auto port = ntohs(address.sin_port);
    pactl({"load-module", "module-native-protocol-tcp", "listen=127.0.0.1", fmt::format("port={}", port)});
    return fmt::format("tcp:127.0.0.1:{}", port);
}

int AudioServer::connections() const
{
    const auto clients = pactl({"list", "clients"});
    const auto mine = fmt::format("application.process.id = \"{}\"", getpid());
    int count = 0;
    for (auto at = clients.find(mine); at != std::string::npos; at = clients.find(mine, at + mine.size()))
        ++count;
    return count;
}

int AudioServer::recordings() const
{
    return static_cast<int>(lines({"list", "short", "source-outputs"}));
}

std::size_t AudioServer::lines(std::vector<std::string> arguments) const
{
    const auto text = pactl(std::move(arguments));
    return text.empty() ? 0 : static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
}

void AudioServer::kill()
{
    m_server.kill();
}

void AudioServer::freeze()
{
    m_server.signal(SIGSTOP);
}

void AudioServer::thaw()
{
    m_server.signal(SIGCONT);
}

} // namespace vocalith::test
