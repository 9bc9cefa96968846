#pragma once

namespace vocalith {

struct ScreenRectangle;

/// Where the overlay's scene appears: above all other windows, never with the focus, blind to the pointer. It is made
/// with its scene long before it is shown, so that showing it is no more than that. Main thread.
class OverlayWindow {
public:
    virtual ~OverlayWindow() = default;

    virtual void show() = 0;
    /// Moves what is shown to the screen that has most of that window.
    virtual void moveTo(const ScreenRectangle& focusedWindow) = 0;
    virtual void hide() = 0;
};

} // namespace vocalith
