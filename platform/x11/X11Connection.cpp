#include "platform/x11/X11Connection.h"

#include "base/MainThread.h"
#include "models/VirtualKeyCode.h"

#include <QAbstractEventDispatcher>
#include <QDeadlineTimer>
#include <QSocketNotifier>
#include <QTimer>

#include <fmt/format.h>

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <utility>

#include <poll.h>

namespace vocalith {
namespace {

/// X11 key codes are those of the kernel, moved up by this much.
constexpr int kKeyCodeOffset = 8;
/// Milliseconds after which others of the event loop have their turn.
constexpr int kLongestTurn = 2;
/// Milliseconds that the event loop stands still for an answer that is nearly here.
constexpr int kBriefly = 1;
/// Marks our own record in a display's list of attached data. Xlib numbers extensions from 0 up.
constexpr int kAttachment = 0x566f63;

XExtData** attachments(Display* display)
{
    XEDataObject object;
    object.display = display;
    return XEHeadOfExtensionList(object);
}

} // namespace

/// What Xlib's callbacks find at the display that they are called for.
struct X11Connection::Attached {
    static X11Connection* find(Display* display)
    {
        const auto* data = XFindOnExtensionList(attachments(display), kAttachment);
        return data == nullptr ? nullptr : reinterpret_cast<X11Connection*>(data->private_data);
    }

    static int error(Display* display, XErrorEvent* event)
    {
        if (auto* const connection = find(display))
            connection->handleError(event->serial, event->error_code, event->request_code);
        return 0;
    }
};

/// What wakes the connection up. Xlib may have read an event while it waited for a reply, so the queue is looked at
/// whenever the loop is about to sleep.
struct X11Connection::Source {
    explicit Source(X11Connection& connection)
        : notifier(ConnectionNumber(connection.m_display), QSocketNotifier::Read),
          beforeSleep(QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                                       [&connection] { connection.dispatch(); }))
    {
        QObject::connect(&notifier, &QSocketNotifier::activated, [&connection] { connection.dispatch(); });
        QObject::connect(&again, &QTimer::timeout, [&connection] { connection.dispatch(); });
        again.setSingleShot(true);
    }
    ~Source() { QObject::disconnect(beforeSleep); }

    QSocketNotifier notifier;
    QMetaObject::Connection beforeSleep;
    QTimer again; ///< for what is left when a turn has taken long enough
};

Result<std::unique_ptr<X11Connection>, std::string> X11Connection::open(const std::string& name, Logger logger)
{
    Display* const display = XOpenDisplay(name.empty() ? nullptr : name.c_str());
    if (display == nullptr)
        return failure(fmt::format("The X server \"{}\" cannot be reached.", XDisplayName(name.c_str())));
    return std::unique_ptr<X11Connection>(new X11Connection(display, std::move(logger)));
}

X11Connection::X11Connection(_XDisplay* display, Logger logger) : m_display(display), m_logger(std::move(logger))
{
    attach();
    m_root = DefaultRootWindow(m_display);
    XSetWindowAttributes attributes{};
    attributes.event_mask = PropertyChangeMask;
    m_window = XCreateWindow(m_display, m_root, -1, -1, 1, 1, 0, 0, InputOnly, nullptr, CWEventMask, &attributes);
    m_source = std::make_unique<Source>(*this);
}

X11Connection::~X11Connection()
{
    m_source.reset();
    XCloseDisplay(m_display);
}

void X11Connection::attach()
{
    auto* const data = static_cast<XExtData*>(std::calloc(1, sizeof(XExtData))); // Xlib frees it
    data->number = kAttachment;
    data->private_data = reinterpret_cast<XPointer>(this);
    data->free_private = [](XExtData*) { return 0; };
    XAddToExtensionList(attachments(m_display), data);
    XSetErrorHandler(&Attached::error);
    // The default one ends the program. Then comes the exit handler, which is each connection's own.
    XSetIOErrorHandler([](Display*) { return 0; });
    XSetIOErrorExitHandler(
        m_display, [](Display*, void* connection) { static_cast<X11Connection*>(connection)->setLost(); }, this);
}

void X11Connection::dispatch()
{
    const QDeadlineTimer end(kLongestTurn);
    while (!m_isLost && XPending(m_display) > 0) {
        if (end.hasExpired()) {
            m_source->again.start(0);
            break;
        }
        dispatchNext();
    }
    if (!m_isLost)
        XFlush(m_display);
}

bool X11Connection::waitBriefly()
{
    if (m_isLost)
        return false;
    if (XPending(m_display) == 0) {
        pollfd arrival{ConnectionNumber(m_display), POLLIN, 0};
        ::poll(&arrival, 1, kBriefly);
    }
    if (m_isLost || XPending(m_display) == 0)
        return false;
    dispatch();
    return true;
}

void X11Connection::dispatchNext()
{
    XEvent next;
    XNextEvent(m_display, &next);
    if (next.type == MappingNotify)
        XRefreshKeyboardMapping(&next.xmapping);
    const bool hasData = next.type == GenericEvent && XGetEventData(m_display, &next.xcookie);
    event.emit(next);
    if (hasData)
        XFreeEventData(m_display, &next.xcookie);
}

void X11Connection::setLost()
{
    if (std::exchange(m_isLost, true))
        return;
    m_logger.error("The connection to the X server is lost");
    if (m_source)
        m_source->notifier.setEnabled(false);
    lost.emit();
}

void X11Connection::handleError(unsigned long serial, int code, int request)
{
    for (auto* const trap : m_traps) {
        if (serial < trap->first || serial > trap->last)
            continue;
        if (trap->error == 0)
            trap->error = code;
        return;
    }
    std::array<char, 128> text{};
    XGetErrorText(m_display, code, text.data(), text.size());
    m_logger.warning(fmt::format("The X server refused request {}: {}", request, text.data()));
}

unsigned long X11Connection::atom(const std::string& name)
{
    const auto known = m_atoms.find(name);
    if (known != m_atoms.end())
        return known->second;
    const Atom atom = XInternAtom(m_display, name.c_str(), False);
    if (m_isLost)
        return None; // what Xlib returns then is not an answer
    return m_atoms.emplace(name, atom).first->second;
}

std::string X11Connection::atomName(unsigned long atom)
{
    const auto [known, isNew] = m_atomNames.try_emplace(atom);
    if (!isNew || atom == None)
        return known->second;
    X11ErrorTrap trap(*this);
    if (char* const name = XGetAtomName(m_display, atom)) {
        known->second = name;
        XFree(name);
    }
    return known->second;
}

std::optional<unsigned char> X11Connection::keyCode(int virtualKeyCode) const
{
    const auto input = inputEventCode(virtualKeyCode);
    if (!input)
        return std::nullopt;
    int lowest = 0;
    int highest = 0;
    XDisplayKeycodes(m_display, &lowest, &highest);
    const int code = *input + kKeyCodeOffset;
    if (code < lowest || code > highest)
        return std::nullopt;
    return static_cast<unsigned char>(code);
}

unsigned long X11Connection::serverTime()
{
    // Writing nothing to a property tells its owner the time.
    const Atom property = atom("_VOCALITH_TIME");
    XChangeProperty(m_display, m_window, property, XA_STRING, 8, PropModeAppend, nullptr, 0);
    XSync(m_display, False);
    XEvent answer;
    unsigned long time = CurrentTime;
    while (XCheckTypedWindowEvent(m_display, m_window, PropertyNotify, &answer))
        time = answer.xproperty.time;
    return time;
}

X11ErrorTrap::X11ErrorTrap(X11Connection& connection)
    : m_connection(connection), m_trap{NextRequest(connection.display()), std::numeric_limits<unsigned long>::max()}
{
    m_connection.m_traps.insert(m_connection.m_traps.begin(), &m_trap);
}

X11ErrorTrap::~X11ErrorTrap()
{
    finish();
    std::erase(m_connection.m_traps, &m_trap);
}

int X11ErrorTrap::finish()
{
    auto* const display = m_connection.display();
    // Nothing is on its way when the last request was one that has an answer.
    if (LastKnownRequestProcessed(display) + 1 < NextRequest(display))
        XSync(display, False);
    m_trap.last = NextRequest(display) - 1;
    return m_trap.error;
}

} // namespace vocalith
