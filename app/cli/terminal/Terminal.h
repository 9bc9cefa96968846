#pragma once

#include <string>
#include <string_view>

namespace vocalith {

/// Standard error as people see it: messages, and one status line that is drawn over and over. On anything but a
/// terminal there are no colours and no status line. Main thread.
class Terminal {
public:
    enum class Colour { plain, red, yellow, green, dim, bold };

    Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal();

    bool isInteractive() const { return m_isInteractive; }

    /// A whole line, above the status line.
    void line(std::string_view text);
    /// Replaces the status line; it must fit in one row.
    void status(std::string_view text);
    void clearStatus();
    /// The bell; silent on anything but a terminal.
    void ring() const;

    /// `text` in that colour, for this terminal.
    std::string coloured(Colour colour, std::string_view text) const;

private:
    void write(std::string_view text) const;

    bool m_isInteractive;
    bool m_usesColour;
    std::string m_status;
};

/// `text` between the codes of that colour.
std::string inColour(Terminal::Colour colour, std::string_view text);

/// Writes all of `text` to standard output; the error is the system's number.
int writeToStandardOutput(std::string_view text);

} // namespace vocalith
