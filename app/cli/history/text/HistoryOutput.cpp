#include "app/cli/history/text/HistoryOutput.h"

#include "app/cli/ExitCode.h"
#include "base/Text.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <sys/ioctl.h>
#include <unistd.h>

namespace vocalith {
namespace {

constexpr std::size_t kColumns = 100; // where nothing says how wide a line may be

std::size_t columnsOfStandardOutput()
{
    winsize size{};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kColumns;
}

bool allowsColour()
{
    const char* term = std::getenv("TERM");
    const char* refused = std::getenv("NO_COLOR");
    return !(term && std::string_view(term) == "dumb") && !(refused && *refused);
}

} // namespace

std::string withoutControlCharacters(std::string_view text)
{
    std::string clean;
    for (std::size_t begin = 0; begin < text.size();) {
        const auto end = std::min(text.find('\n', begin), text.size());
        const auto line = text.substr(begin, end - begin);
        clean.append(std::min(line.find_first_not_of(' '), line.size()), ' ');
        clean += cleanText(line, ' ');
        if (end < text.size())
            clean += '\n';
        begin = end + 1;
    }
    return clean;
}

HistoryOutput::HistoryOutput(Terminal& terminal)
    : m_terminal(terminal), m_isTerminal(::isatty(STDOUT_FILENO) == 1), m_usesColour(m_isTerminal && allowsColour()),
      m_columns(columnsOfStandardOutput())
{}

std::string HistoryOutput::coloured(Terminal::Colour colour, std::string_view text) const
{
    return m_usesColour ? inColour(colour, text) : std::string(text);
}

int HistoryOutput::show(std::string_view text) const
{
    m_terminal.clearStatus();
    const int error = writeToStandardOutput(text);
    if (error == 0)
        return exitSuccess;
    if (error == EPIPE) // whoever read has seen enough
        return exitFailure;
    return complain("Standard output could not be written: " + std::generic_category().message(error) + ".");
}

int HistoryOutput::print(std::string_view text) const
{
    return m_isTerminal ? show(withoutControlCharacters(text)) : show(text);
}

void HistoryOutput::note(std::string_view text) const
{
    m_terminal.line(withoutControlCharacters(text));
}

int HistoryOutput::complain(std::string_view text) const
{
    m_terminal.line(m_terminal.coloured(Terminal::Colour::red, "Error: ") + withoutControlCharacters(text));
    return exitFailure;
}

} // namespace vocalith
