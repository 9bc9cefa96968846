#pragma once

#include "base/Clock.h"

#include <chrono>
#include <optional>
#include <string>

namespace vocalith {

class InputSources;

/// Switches the keyboard to a US layout for the length of a keystroke. Part of the typing service, main thread.
class USLayout {
public:
    /// What the focused application has for seeing the keystroke under the US layout.
    static constexpr std::chrono::milliseconds kSwitchBackDelay{100};

    USLayout(InputSources& inputSources, Clock& clock) : m_inputSources(inputSources), m_clock(clock) {}

    /// Yields whether a US layout is active now. It is not tried where the way back is not known.
    bool select();
    /// Has the user's layout come back after the delay.
    void switchBackLater();
    void switchBack(); ///< now

private:
    InputSources& m_inputSources;
    Clock& m_clock;
    std::optional<std::string> m_remembered; ///< the user's layout while a US one is in its place
    Timer m_timer;
};

} // namespace vocalith
