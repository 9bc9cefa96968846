#pragma once

#include "base/Task.h"
#include "ports/Accessibility.h"

#include <optional>
#include <string>

namespace vocalith {

/// The application whose window has the focus.
struct FocusedApplication {
    std::string identifier;  ///< its desktop entry where it says so, else its window class
    std::string name;        ///< for people
    std::string windowTitle; ///< UTF-8
    int processId = 0;       ///< 0 when unknown
    bool isTerminal = false; ///< a terminal emulator, which pastes by other keys
    std::optional<ScreenRectangle> window;
    bool operator==(const FocusedApplication&) const = default;
};

/// Says what the user works in. Main thread; an answer takes at most 200 ms.
class FocusedApp {
public:
    virtual ~FocusedApp() = default;

    virtual Task<std::optional<FocusedApplication>> focused() = 0; ///< nothing where the desktop does not say
};

/// Whether the window of that class or application identifier is a terminal emulator.
bool isTerminalEmulator(std::string_view identifier);

} // namespace vocalith
