// The paste itself costs next to nothing: the time from the final text to the posted keys (clipboard saved, text put
// there, keys pressed), against a bare client that makes the same requests and waits for each answer. Nobody takes the
// keys, so that an editor's own work is no part of it.

#include "bench/Median.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/clipboard/X11Pasteboard.h"
#include "platform/x11/keyboard/X11KeyEvents.h"
#include "tests/support/MainLoop.h"
#include "tests/support/XDisplay.h"

#include <QCoreApplication>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <chrono>
#include <cstdio>

using namespace vocalith;
using namespace vocalith::test;

namespace {

using SteadyClock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr double kLimit = 1.2;
constexpr int kRounds = 101;

struct Ours {
    explicit Ours(const XDisplay& display)
        : forClipboard(std::move(X11Connection::open(display.name())).value()),
          forKeys(std::move(X11Connection::open(display.name())).value())
    {}

    Task<Milliseconds> paste(std::string text)
    {
        namespace code = virtual_key_code;
        constexpr auto kFlags = modifier_flags::command;
        const auto start = SteadyClock::now();
        const auto before = co_await clipboard.snapshot();
        const auto written = co_await clipboard.writeText(text, true);
        const auto source = keys.createSource(KeyEvents::SourceState::privateState);
        const std::vector<KeyEvent> chord{{code::command, true, kFlags},
                                          {code::ansiV, true, kFlags},
                                          {code::ansiV, false, kFlags},
                                          {code::command, false}};
        const auto posted = source->post(chord);
        const Milliseconds passed = SteadyClock::now() - start;
        if (!before || before->items.empty() || !written || !posted)
            std::printf("the paste failed\n");
        co_return passed;
    }

    SystemClock clock;
    std::unique_ptr<X11Connection> forClipboard;
    std::unique_ptr<X11Connection> forKeys;
    X11Pasteboard clipboard{*forClipboard, clock, {}};
    X11KeyEvents keys{*forKeys, clock, {}};
};

struct Bare {
    explicit Bare(const XDisplay& used) : display(XOpenDisplay(used.name().c_str()))
    {
        window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0);
        XSelectInput(display, window, PropertyChangeMask);
    }
    ~Bare() { XCloseDisplay(display); }

    Atom atom(const char* name) const { return XInternAtom(display, name, False); }

    std::vector<unsigned long> read(Atom target) const
    {
        const Atom property = XA_CUT_BUFFER0;
        XConvertSelection(display, clipboard, target, property, window, CurrentTime);
        XEvent event;
        XIfEvent(
            display, &event,
            [](Display*, XEvent* arrived, XPointer) -> Bool { return arrived->type == SelectionNotify; }, nullptr);
        if (event.xselection.property == None)
            return {};
        Atom type = None;
        int format = 0;
        unsigned long count = 0;
        unsigned long rest = 0;
        unsigned char* data = nullptr;
        XGetWindowProperty(display, window, property, 0, 1 << 20, True, AnyPropertyType, &type, &format, &count, &rest,
                           &data);
        std::vector<unsigned long> values;
        if (format == 32)
            values.assign(reinterpret_cast<unsigned long*>(data), reinterpret_cast<unsigned long*>(data) + count);
        XFree(data);
        return values;
    }

    Milliseconds paste() const
    {
        const auto start = SteadyClock::now();
        for (const Atom target : read(targets)) {
            if (target != targets)
                read(target);
        }
        XChangeProperty(display, window, XA_CUT_BUFFER1, XA_STRING, 8, PropModeAppend, nullptr, 0);
        XEvent event;
        XIfEvent(
            display, &event,
            [](Display*, XEvent* arrived, XPointer) -> Bool {
                return arrived->type == PropertyNotify && arrived->xproperty.atom == XA_CUT_BUFFER1;
            },
            nullptr);
        XSetSelectionOwner(display, clipboard, window, event.xproperty.time);
        XGetSelectionOwner(display, clipboard);
        const auto control = XKeysymToKeycode(display, XK_Control_L);
        const auto letter = XKeysymToKeycode(display, XK_v);
        XTestFakeKeyEvent(display, control, True, CurrentTime);
        XTestFakeKeyEvent(display, letter, True, CurrentTime);
        XTestFakeKeyEvent(display, letter, False, CurrentTime);
        XTestFakeKeyEvent(display, control, False, CurrentTime);
        XSync(display, False);
        return SteadyClock::now() - start;
    }

    Display* display;
    Window window = None;
    Atom clipboard = atom("CLIPBOARD");
    Atom targets = atom("TARGETS");
};

/// Somebody else has the clipboard, as it is when a user dictates.
void copy(const XDisplay& display, const Bare& bare)
{
    const auto owner = [&] { return XGetSelectionOwner(bare.display, bare.clipboard); };
    const auto before = owner();
    display.run({"/bin/sh", "-c", "printf 'what the user had copied' | xclip -selection clipboard -i"});
    runUntil([&] { return owner() != before; });
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const XDisplay display;
    Ours ours(display);
    const Bare bare(display);
    std::vector<Milliseconds> mine;
    std::vector<Milliseconds> least;
    for (int round = 0; round < kRounds; ++round) {
        copy(display, bare);
        least.push_back(bare.paste());
        copy(display, bare);
        mine.push_back(await(ours.paste("words ")));
    }
    const Milliseconds ourTime = bench::median(mine);
    const Milliseconds bareTime = bench::median(least);
    const double ratio = ourTime / bareTime;
    std::printf("%.2f ms, a bare client %.2f ms\n", ourTime.count(), bareTime.count());
    std::printf("final text to posted paste: ratio %.2f (limit %.1f)\n", ratio, kLimit);
    return ratio <= kLimit ? 0 : 1;
}
