#pragma once

#include "app/cli/terminal/Terminal.h"
#include "ports/SoundPlayer.h"
#include "ports/SystemVolume.h"

namespace vocalith {

/// The sounds of the command line: a terminal has one.
class TerminalBell final : public SoundPlayer {
public:
    explicit TerminalBell(Terminal& terminal) : m_terminal(terminal) {}

    Result<void, std::string> play(Sound sound) override
    {
        if (sound == Sound::recordingEnded) // the microphone would hear one at the start
            m_terminal.ring();
        return {};
    }
    void stop() override {} // a bell is over as soon as it has rung

private:
    Terminal& m_terminal;
};

/// The command line leaves the volume as it is, so there is nothing to give back.
class UntouchedVolume final : public SystemVolume {
public:
    void mute() override {}
    void restore() override {}
};

} // namespace vocalith
