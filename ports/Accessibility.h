#pragma once

#include "base/Task.h"

#include <memory>
#include <optional>
#include <string>

namespace vocalith {

/// A rectangle of the screen, in physical pixels.
struct ScreenRectangle {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool operator==(const ScreenRectangle&) const = default;
};

/// What stands in the focused element around the caret, in UTF-8.
struct FocusedText {
    std::string selection;
    std::string before; ///< ends at the caret, or at the beginning of the selection
    std::string after;  ///< begins at the caret, or at the end of the selection
    std::optional<ScreenRectangle> caret;
    bool operator==(const FocusedText&) const = default;
};

/// The element that has the keyboard focus when it is asked for. It may be gone by the time it is used, which is an
/// error then, not a fault.
class FocusedElement {
public:
    virtual ~FocusedElement() = default;

    /// A field that hides what is typed; its text is never read.
    virtual bool isSecure() const = 0;
    virtual bool isEditable() const = 0;
    /// Process of the application; 0 when unknown.
    virtual int processId() const = 0;

    /// Replaces the selection, or inserts at the caret. Yields 0, or the number of the error.
    virtual Task<int> setSelectedText(std::string text) = 0;
    /// At most `limit` characters (Unicode code points) each of selection, before and after. Nothing where the element
    /// has no text or hides it.
    virtual Task<std::optional<FocusedText>> text(int limit) = 0;
    /// What the element's window shows as text, at most `limit` characters, secure fields left out.
    virtual Task<std::string> visibleText(int limit) = 0;
};

/// The desktop's accessibility interface. Main thread; it outlives its elements and tasks. Every wait is bounded: an
/// application that hangs costs at most 200 ms in all for one call here or on an element.
class Accessibility {
public:
    virtual ~Accessibility() = default;

    /// Whether the program may and can use it: on Linux, whether there is an accessibility bus.
    virtual bool isProcessTrusted() const = 0;
    virtual Task<std::unique_ptr<FocusedElement>> focusedElement() = 0; ///< null when there is none
};

} // namespace vocalith
