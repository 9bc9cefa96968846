#include "tests/support/program/ProgramRun.h"

#include "tests/support/Places.h"

#include <gtest/gtest.h>

#include <array>

#include <fcntl.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vocalith::test {

ProgramRun::ProgramRun(const std::filesystem::path& home, const std::vector<std::string>& arguments,
                       const Surroundings& surroundings)
{
    auto environment = QProcessEnvironment::systemEnvironment();
    const auto set = [&](const std::string& name, const std::string& value) {
        if (value.empty())
            environment.remove(QString::fromStdString(name));
        else
            environment.insert(QString::fromStdString(name), QString::fromStdString(value));
    };
    set("VOCALITH_HOME", home.string());
    set("OMP_WAIT_POLICY", "passive");
    set("TZ", "UTC");
    set("PULSE_SERVER", "unix:" + (home / "none").string());
    for (const char* display : {"DISPLAY", "WAYLAND_DISPLAY"})
        set(display, {});
    for (const auto& [name, value] : surroundings.environment)
        set(name, value);
    m_process.setProcessEnvironment(environment);
    if (!surroundings.output.empty())
        m_process.setStandardOutputFile(QString::fromStdString(surroundings.output));
    if (surroundings.terminal >= 0) {
        m_process.setChildProcessModifier([terminal = surroundings.terminal] {
            ::setsid();
            ::ioctl(terminal, TIOCSCTTY, 0);
            for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
                ::dup2(terminal, stream);
        });
    }
    if (!surroundings.closed.empty()) {
        m_process.setChildProcessModifier([closed = surroundings.closed] {
            for (const int stream : closed)
                ::close(stream);
        });
    }
    QStringList list;
    for (const auto& argument : arguments)
        list << QString::fromStdString(argument);
    m_process.start(QString::fromStdString(programFile()), list);
}

Ended ProgramRun::wait()
{
    // A whole recognition, on a machine that may be busy with other tests.
    runUntil([this] { return m_process.state() == QProcess::NotRunning; }, std::chrono::minutes(3));
    return {m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1,
            m_process.readAllStandardOutput().toStdString(), m_process.readAllStandardError().toStdString()};
}

ProgramOnTerminal::ProgramOnTerminal(const std::filesystem::path& home, const std::vector<std::string>& arguments)
{
    winsize size{};
    size.ws_col = 60;
    size.ws_row = 24;
    EXPECT_EQ(::openpty(&m_master, &m_slave, nullptr, nullptr, &size), 0);
    for (const int end : {m_master, m_slave})
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
    ::fcntl(m_master, F_SETFL, O_NONBLOCK);
    Surroundings surroundings;
    surroundings.environment = {{"TERM", "xterm"}, {"NO_COLOR", ""}};
    surroundings.terminal = m_slave;
    m_run = std::make_unique<ProgramRun>(home, arguments, surroundings);
}

ProgramOnTerminal::~ProgramOnTerminal()
{
    ::close(m_master);
    ::close(m_slave);
}

void ProgramOnTerminal::read()
{
    std::array<char, 4096> bytes{};
    for (;;) {
        const auto count = ::read(m_master, bytes.data(), bytes.size());
        if (count <= 0)
            return;
        m_screen.append(bytes.data(), static_cast<std::size_t>(count));
    }
}

void ProgramOnTerminal::waitFor(const std::string& text)
{
    runUntil([&] {
        read();
        return m_screen.find(text) != std::string::npos;
    });
}

void ProgramOnTerminal::type(const std::string& keys) const
{
    EXPECT_EQ(::write(m_master, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

int ProgramOnTerminal::wait()
{
    runUntil([this] {
        read();
        return m_run->process().state() == QProcess::NotRunning;
    });
    read();
    return m_run->process().exitCode();
}

} // namespace vocalith::test
