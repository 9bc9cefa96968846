#pragma once

#include "ports/ClipboardWriter.h"

#include <vector>

namespace vocalith {

class Clock;

/// Copies with the programs that desktops have for it: `wl-copy` on Wayland, `xclip` or `xsel` on X11. They stay in the
/// background for as long as what they copied is on the clipboard. The composition owns it; main thread.
class ClipboardProgram final : public ClipboardWriter {
public:
    explicit ClipboardProgram(Clock& clock) : m_clock(clock) {}

    /// A program that takes longer than five seconds is ended.
    Task<Result<void, ClipboardError>> write(std::string text) override;

private:
    struct Program;
    static std::vector<Program> installed();
    Task<Result<void, ClipboardError>> copyWith(Program program, std::string text);

    Clock& m_clock;
};

} // namespace vocalith
