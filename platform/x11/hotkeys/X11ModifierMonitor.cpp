#include "platform/x11/hotkeys/X11ModifierMonitor.h"

#include "base/MainThread.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/hotkeys/X11ModifierMap.h"

#include <X11/Xlib.h>
#include <X11/Xproto.h>
#include <X11/extensions/record.h>

#include <array>
#include <utility>

namespace vocalith {
namespace {

constexpr std::size_t kKeyCodes = 256;
constexpr unsigned kGroupShift = 13; // of an event's state
constexpr unsigned kGroups = 3;

HotKeyError notMonitored()
{
    return {HotKeyError::Kind::unsupported, 0, "Choose a shortcut that has a key beside the modifier keys."};
}

XRecordContext makeContext(Display* display)
{
    int major = 0;
    int minor = 0;
    if (XRecordQueryVersion(display, &major, &minor) == 0)
        return None;
    XRecordRange* range = XRecordAllocRange();
    range->device_events.first = KeyPress;
    range->device_events.last = ButtonPress; // KeyRelease is between them
    XRecordClientSpec clients = XRecordAllClients;
    const XRecordContext context = XRecordCreateContext(display, 0, &clients, 1, &range, 1);
    XFree(range);
    XSync(display, False); // the other connection is to find it
    return context;
}

} // namespace

/// What the server's callback has collected. It runs in the middle of Xlib, so the keys are handled later.
struct X11ModifierMonitor::Recorded : std::enable_shared_from_this<Recorded> {
    std::vector<Key> keys;
    X11ModifierMonitor* monitor = nullptr; ///< none when it is gone
    bool isScheduled = false;

    static void arrived(XPointer closure, XRecordInterceptData* data)
    {
        if (data->category == XRecordFromServer && data->data_len > 0) {
            const auto* const event = reinterpret_cast<const xEvent*>(data->data);
            reinterpret_cast<Recorded*>(closure)->add(
                {event->u.u.type & 0x7f, event->u.u.detail, event->u.keyButtonPointer.state});
        }
        XRecordFreeData(data);
    }

    void add(const Key& key)
    {
        keys.push_back(key);
        if (std::exchange(isScheduled, true))
            return;
        postToMainThread([weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->drain();
        });
    }

    void drain()
    {
        isScheduled = false;
        for (const auto& key : std::exchange(keys, {})) {
            if (monitor != nullptr)
                monitor->handle(key);
        }
    }
};

Result<std::unique_ptr<X11ModifierMonitor>, HotKeyError>
X11ModifierMonitor::open(X11Connection& control, Handlers handlers, const Logger& logger)
{
    auto data = X11Connection::open(DisplayString(control.display()), logger);
    if (!data)
        return failure(HotKeyError{HotKeyError::Kind::failed, 0, data.error()});
    const XRecordContext context = makeContext(control.display());
    if (context == None)
        return failure(notMonitored());
    std::unique_ptr<X11ModifierMonitor> monitor(
        new X11ModifierMonitor(control, std::move(*data), context, std::move(handlers)));
    auto* const closure = reinterpret_cast<XPointer>(monitor->m_recorded.get());
    if (XRecordEnableContextAsync(monitor->m_data->display(), context, &Recorded::arrived, closure) == 0)
        return failure(notMonitored());
    monitor->readHeldKeys();
    return monitor;
}

X11ModifierMonitor::X11ModifierMonitor(X11Connection& control, std::unique_ptr<X11Connection> data,
                                       unsigned long context, Handlers handlers)
    : m_control(control), m_handlers(std::move(handlers)), m_context(context), m_recorded(std::make_shared<Recorded>()),
      m_data(std::move(data))
{
    m_recorded->monitor = this;
}

X11ModifierMonitor::~X11ModifierMonitor()
{
    m_recorded->monitor = nullptr;
    if (m_control.isLost())
        return;
    XRecordDisableContext(m_control.display(), m_context);
    XRecordFreeContext(m_control.display(), m_context);
    XSync(m_control.display(), False);
}

void X11ModifierMonitor::readHeldKeys()
{
    std::array<char, kKeyCodes / 8> keys{};
    XQueryKeymap(m_control.display(), keys.data());
    for (std::size_t code = 0; code < kKeyCodes; ++code) {
        const bool isHeld = ((static_cast<unsigned char>(keys.at(code / 8)) >> (code % 8)) & 1U) != 0;
        const auto flag = modifierFlag(m_control.display(), static_cast<KeyCode>(code), 0);
        if (isHeld && flag != 0)
            m_held[static_cast<KeyCode>(code)] = flag;
    }
}

void X11ModifierMonitor::handle(const Key& key)
{
    const auto before = flags();
    const bool isKeyDown = key.event == KeyPress;
    const auto group = (key.state >> kGroupShift) & kGroups;
    const auto flag = isKeyDown ? modifierFlag(m_control.display(), key.code, group) : 0;
    if (key.event == KeyRelease)
        m_held.erase(key.code);
    else if (flag != 0)
        m_held[key.code] = flag;
    else if (before != 0 && !(isKeyDown && m_handlers.isHotKey(key.code, key.state)))
        m_handlers.changed({before, true});
    if (const auto now = flags(); now != before)
        m_handlers.changed({now, false});
}

std::uint64_t X11ModifierMonitor::flags() const
{
    std::uint64_t all = 0;
    for (const auto& [code, flag] : m_held)
        all |= flag;
    return all;
}

} // namespace vocalith
