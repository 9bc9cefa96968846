#pragma once

#include "models/KeyboardShortcut.h"

#include <memory>
#include <string>

namespace vocalith::test {

/// A user at an X display of the test's: hands on the keyboard, and a window that takes what is typed. It is another
/// client than the code under test.
class Keyboard {
public:
    explicit Keyboard(const std::string& display);
    ~Keyboard();
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;

    /// Keys as people write them; the modifiers go down first and come up last. The server has them when it returns.
    void press(const std::string& keys) { change(keys, true); }
    void release(const std::string& keys) { change(keys, false); }
    void tap(const std::string& keys);
    /// One key by its X key code.
    void changeCode(unsigned char code, bool isDown);
    /// A button of the mouse, or a step of its wheel.
    void click(unsigned button);

    /// Switches these X modifiers on as locks, and all others off.
    void lock(unsigned modifiers);
    void lockGroup(unsigned group);
    /// Held keys repeat after so many milliseconds, as often.
    void repeatEvery(unsigned milliseconds);
    /// Makes the keys of one X modifier those of another, which must have none.
    void moveModifier(int from, int to);

    /// Takes the keys as another program does, with exactly these X modifiers. False when somebody has them.
    bool grab(const std::string& keys, unsigned modifiers);
    void ungrab(const std::string& keys, unsigned modifiers);
    /// Takes the whole keyboard, as an open menu does.
    void grabAll();
    void ungrabAll();

    /// How many presses of keys that are no modifiers the window has got since the last time.
    int typed();

private:
    struct Client;
    void change(const std::string& keys, bool isDown);
    std::unique_ptr<Client> m_client;
};

} // namespace vocalith::test
