#include "tests/platform/x11/hotkeys/Keyboard.h"

#include "models/KeyboardShortcutText.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"
#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

#include <algorithm>
#include <vector>

namespace vocalith::test {
namespace {

unsigned char codeOf(int virtualKeyCode)
{
    return static_cast<unsigned char>(inputEventCode(virtualKeyCode).value() + 8);
}

std::vector<unsigned char> codesOf(const std::string& text)
{
    const auto keys = parseKeys(text).value();
    std::vector<unsigned char> codes;
    for (const int modifier :
         {virtual_key_code::control, virtual_key_code::option, virtual_key_code::shift, virtual_key_code::command}) {
        if ((keys.rawFlags & modifierFlag(modifier)) != 0)
            codes.push_back(codeOf(modifier));
    }
    if (keys.keyCode)
        codes.push_back(codeOf(*keys.keyCode));
    return codes;
}

} // namespace

struct Keyboard::Client {
    explicit Client(const std::string& name) : display(XOpenDisplay(name.c_str()))
    {
        XSetIOErrorExitHandler(
            display, [](Display*, void*) {}, nullptr);
        window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 100, 100, 0, 0, 0);
        XSelectInput(display, window, KeyPressMask | StructureNotifyMask | FocusChangeMask);
        runUntil([this] { // a window manager that is just starting overlooks the first request
            XMapWindow(display, window);
            XWindowAttributes attributes{};
            XGetWindowAttributes(display, window, &attributes);
            return attributes.map_state == IsViewable;
        });
        runUntil([this] {
            XSetInputFocus(display, window, RevertToParent, CurrentTime);
            Window focus = 0;
            int revert = 0;
            XGetInputFocus(display, &focus, &revert);
            return focus == window;
        });
    }
    ~Client() { XCloseDisplay(display); }

    Window root() const { return DefaultRootWindow(display); }
    void sync() const { XSync(display, False); }

    Display* display;
    Window window = 0;
};

Keyboard::Keyboard(const std::string& display) : m_client(std::make_unique<Client>(display))
{}

Keyboard::~Keyboard() = default;

void Keyboard::change(const std::string& keys, bool isDown)
{
    auto codes = codesOf(keys);
    if (!isDown)
        std::ranges::reverse(codes);
    for (const auto code : codes)
        XTestFakeKeyEvent(m_client->display, code, isDown, CurrentTime);
    m_client->sync();
}

void Keyboard::tap(const std::string& keys)
{
    press(keys);
    release(keys);
}

void Keyboard::changeCode(unsigned char code, bool isDown)
{
    XTestFakeKeyEvent(m_client->display, code, isDown, CurrentTime);
    m_client->sync();
}

void Keyboard::click(unsigned button)
{
    for (const bool isDown : {true, false})
        XTestFakeButtonEvent(m_client->display, button, isDown, CurrentTime);
    m_client->sync();
}

void Keyboard::lock(unsigned modifiers)
{
    XkbLockModifiers(m_client->display, XkbUseCoreKbd, 0xff, modifiers);
    m_client->sync();
}

void Keyboard::lockGroup(unsigned group)
{
    XkbLockGroup(m_client->display, XkbUseCoreKbd, group);
    m_client->sync();
}

void Keyboard::repeatEvery(unsigned milliseconds)
{
    XkbSetAutoRepeatRate(m_client->display, XkbUseCoreKbd, milliseconds, milliseconds);
    m_client->sync();
}

void Keyboard::moveModifier(int from, int to)
{
    XModifierKeymap* const map = XGetModifierMapping(m_client->display);
    for (int i = 0; i < map->max_keypermod; ++i)
        std::swap(map->modifiermap[from * map->max_keypermod + i], map->modifiermap[to * map->max_keypermod + i]);
    EXPECT_EQ(XSetModifierMapping(m_client->display, map), MappingSuccess);
    XFreeModifiermap(map);
    m_client->sync();
}

bool Keyboard::grab(const std::string& keys, unsigned modifiers)
{
    // The server says no by an error, which goes to whoever set the process's handler; so it is asked for afterwards.
    static int error = 0;
    error = 0;
    const auto handler = XSetErrorHandler([](Display*, XErrorEvent* event) { return error = event->error_code; });
    XGrabKey(m_client->display, codesOf(keys).back(), modifiers, m_client->root(), False, GrabModeAsync, GrabModeAsync);
    m_client->sync();
    XSetErrorHandler(handler);
    return error == 0;
}

void Keyboard::ungrab(const std::string& keys, unsigned modifiers)
{
    XUngrabKey(m_client->display, codesOf(keys).back(), modifiers, m_client->root());
    m_client->sync();
}

void Keyboard::grabAll()
{
    EXPECT_EQ(XGrabKeyboard(m_client->display, m_client->window, False, GrabModeAsync, GrabModeAsync, CurrentTime),
              GrabSuccess);
}

void Keyboard::ungrabAll()
{
    XUngrabKeyboard(m_client->display, CurrentTime);
    m_client->sync();
}

int Keyboard::typed()
{
    m_client->sync();
    int count = 0;
    for (XEvent event; XCheckTypedEvent(m_client->display, KeyPress, &event) != 0;)
        count += !IsModifierKey(XLookupKeysym(&event.xkey, 0));
    return count;
}

} // namespace vocalith::test
