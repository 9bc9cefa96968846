#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "base/OneShot.h"
#include "platform/x11/keyboard/X11Keyboard_p.h"
#include "platform/x11/windows/X11Windows_p.h"
#include "ports/KeyEvents.h"

#include <optional>
#include <string>
#include <string_view>

namespace vocalith {

/// Types text into the window that has the focus. Main thread; it outlives its tasks.
class X11Typist {
public:
    X11Typist(X11Keyboard& keyboard, Clock& clock, Logger logger);
    ~X11Typist();

    Task<Result<void, KeyEventsError>> type(std::string text);

private:
    enum class Step { typed, mapChanged, impossible, focusLost };

    Step typeSome(std::u32string_view& rest);
    void showMap();
    bool hasFocus();
    std::size_t strike(std::u32string_view text);
    Task<Result<bool, Cancelled>> settle();
    void sendPing(long time);
    Task<Result<void, KeyEventsError>> typeAll(std::u32string_view text);

    X11Keyboard& m_keyboard;
    X11Connection& m_connection;
    X11Windows m_windows;
    Clock& m_clock;
    const Logger m_logger;
    const unsigned long m_window;
    X11SpareKeys m_spareKeys;
    Timer m_takeBack;
    unsigned long m_focus = 0;
    unsigned long m_target = 0; ///< the window around the focus, which is asked for answers
    bool m_answersPings = false;
    int m_shown = -1;      ///< the generation of the map that the application has been shown
    int m_understood = -1; ///< and has come to
};

} // namespace vocalith
