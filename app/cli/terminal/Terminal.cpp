#include "app/cli/terminal/Terminal.h"

#include <cerrno>
#include <cstdlib>

#include <poll.h>
#include <unistd.h>

namespace vocalith {
namespace {

std::string_view escapeCode(Terminal::Colour colour)
{
    switch (colour) {
    case Terminal::Colour::plain: return "";
    case Terminal::Colour::red: return "\x1b[31m";
    case Terminal::Colour::yellow: return "\x1b[33m";
    case Terminal::Colour::green: return "\x1b[32m";
    case Terminal::Colour::dim: return "\x1b[2m";
    case Terminal::Colour::bold: return "\x1b[1m";
    }
    return "";
}

int writeAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const auto written = ::write(descriptor, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
            continue;
        }
        if (errno == EAGAIN) {
            pollfd ready{descriptor, POLLOUT, 0};
            ::poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

bool environmentHas(const char* name)
{
    const char* value = std::getenv(name);
    return value && *value;
}

} // namespace

Terminal::Terminal() : m_isInteractive(::isatty(STDERR_FILENO) == 1)
{
    const char* term = std::getenv("TERM");
    const bool isDumb = term && std::string_view(term) == "dumb";
    m_isInteractive = m_isInteractive && !isDumb;
    m_usesColour = m_isInteractive && !environmentHas("NO_COLOR");
}

Terminal::~Terminal()
{
    clearStatus();
}

void Terminal::line(std::string_view text)
{
    const std::string kept = m_status;
    clearStatus();
    write(std::string(text) + '\n');
    if (!kept.empty())
        status(kept);
}

void Terminal::status(std::string_view text)
{
    if (!m_isInteractive || text == m_status)
        return;
    m_status = text;
    write("\r\x1b[K" + m_status);
}

void Terminal::clearStatus()
{
    if (m_status.empty())
        return;
    m_status.clear();
    write("\r\x1b[K");
}

void Terminal::ring() const
{
    if (m_isInteractive)
        write("\a");
}

std::string Terminal::coloured(Colour colour, std::string_view text) const
{
    if (!m_usesColour || colour == Colour::plain)
        return std::string(text);
    return inColour(colour, text);
}

void Terminal::write(std::string_view text) const
{
    writeAll(STDERR_FILENO, text);
}

std::string inColour(Terminal::Colour colour, std::string_view text)
{
    return std::string(escapeCode(colour)) + std::string(text) + "\x1b[0m";
}

int writeToStandardOutput(std::string_view text)
{
    return writeAll(STDOUT_FILENO, text);
}

} // namespace vocalith
