#pragma once

#include "ports/Accessibility.h"

#include <optional>
#include <string>
#include <vector>

namespace vocalith {

class X11Connection;

/// Asks the X server about windows. The server answers, never the application, so one that hangs costs nothing. Each
/// question is a round trip or a few; a window that is gone has empty answers. Main thread.
class X11Windows {
public:
    explicit X11Windows(X11Connection& connection) : m_connection(connection) {}

    /// What the keys go to; 0 when nothing has the focus or it follows the pointer.
    unsigned long inputFocus();
    /// The window that the window manager says is active, else that around the focus; 0 when there is none.
    unsigned long active();
    /// The window around it that a window manager manages, else the outermost one that says its class, else itself.
    unsigned long topLevel(unsigned long window);

    std::string windowClass(unsigned long window);
    /// Whether the keys go nowhere. Not on a server within a Wayland compositor, which has the focus itself then.
    bool hasNoFocus();
    /// Marks a window as one of this program, whichever connection it was made on.
    void markAsOwn(unsigned long window);
    /// Whether the window that owns the selection is marked so.
    bool isOwnSelection(unsigned long selection);
    /// The class of the window that the keys go to.
    std::string focusedClass();
    std::string title(unsigned long window); ///< UTF-8
    std::string text(unsigned long window, const std::string& property);
    std::vector<std::string> texts(unsigned long window, const std::string& property); ///< those that a NUL ends each
    std::vector<unsigned long> numbers(unsigned long window, const std::string& property);
    /// The process of the client that made the window; 0 when the server does not know.
    int processId(unsigned long window);
    std::optional<ScreenRectangle> rectangle(unsigned long window);

private:
    X11Connection& m_connection;
};

/// Whether windows of that class paste from the primary selection, with Shift and Insert, and know no other way.
bool pastesFromPrimary(const std::string& windowClass);

} // namespace vocalith
