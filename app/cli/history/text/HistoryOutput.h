#pragma once

#include "app/cli/terminal/Terminal.h"

#include <string>
#include <string_view>

namespace vocalith {

/// The text without what a terminal would obey: control characters go, invalid UTF-8 becomes U+FFFD. Lines and their
/// indentation stay.
std::string withoutControlCharacters(std::string_view text);

/// What the commands of the history say: results on standard output, everything else on standard error. Main thread.
class HistoryOutput {
public:
    explicit HistoryOutput(Terminal& terminal);

    /// How wide a line of standard output may be.
    std::size_t columns() const { return m_columns; }
    /// `text` in that colour, for standard output.
    std::string coloured(Terminal::Colour colour, std::string_view text) const;

    /// Prints what was put together for people. Yields the exit code.
    int show(std::string_view text) const;
    /// Prints something stored: as it is, but to a terminal without control characters. Yields the exit code.
    int print(std::string_view text) const;

    /// Lines on standard error, whatever they hold.
    void note(std::string_view text) const;
    /// Says on standard error what went wrong. Yields the exit code.
    int complain(std::string_view text) const;

    Terminal& terminal() const { return m_terminal; }

private:
    Terminal& m_terminal;
    bool m_isTerminal;
    bool m_usesColour;
    std::size_t m_columns;
};

} // namespace vocalith
