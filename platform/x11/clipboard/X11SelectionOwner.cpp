#include "platform/x11/clipboard/X11SelectionOwner_p.h"

#include "platform/x11/X11Connection.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <utility>

namespace vocalith {

X11SelectionOwner::X11SelectionOwner(X11Connection& connection, Clock& clock, unsigned long window,
                                     unsigned long selection)
    : m_connection(connection), m_transfers(connection, clock), m_window(window), m_selection(selection)
{}

bool X11SelectionOwner::own(X11SelectionContent content, Served served)
{
    m_ownedSince = m_connection.serverTime();
    m_lastChange = NextRequest(m_connection.display());
    XSetSelectionOwner(m_connection.display(), m_selection, m_window, m_ownedSince);
    m_isOwner = XGetSelectionOwner(m_connection.display(), m_selection) == m_window && !m_connection.isLost();
    if (!m_isOwner)
        return false;
    m_content = std::move(content);
    m_served = std::move(served);
    return true;
}

void X11SelectionOwner::disown()
{
    const auto time = m_connection.serverTime();
    m_lastChange = NextRequest(m_connection.display());
    XSetSelectionOwner(m_connection.display(), m_selection, None, time);
    XSync(m_connection.display(), False);
    m_isOwner = false;
    m_content.clear();
}

bool X11SelectionOwner::handle(const _XEvent& event)
{
    m_transfers.handle(event);
    if (event.type == SelectionRequest && event.xselectionrequest.selection == m_selection)
        answer(event);
    if (event.type != SelectionClear || event.xselectionclear.selection != m_selection || isStale(event.xany.serial))
        return false;
    m_isOwner = false;
    m_content.clear(); // transfers under way keep what they need
    return true;
}

void X11SelectionOwner::answer(const _XEvent& event)
{
    const auto& request = event.xselectionrequest;
    XEvent reply{};
    reply.xselection.type = SelectionNotify;
    reply.xselection.requestor = request.requestor;
    reply.xselection.selection = request.selection;
    reply.xselection.target = request.target;
    reply.xselection.time = request.time;
    // Clients from long ago name no property and mean the target's name.
    const Atom property = request.property == None ? request.target : request.property;
    if (m_isOwner && convert(request.requestor, request.target, property))
        reply.xselection.property = property;
    X11ErrorTrap trap(m_connection);
    XSendEvent(m_connection.display(), request.requestor, False, NoEventMask, &reply);
}

bool X11SelectionOwner::convert(unsigned long requestor, unsigned long target, unsigned long property)
{
    if (target == m_connection.atom("MULTIPLE"))
        return convertMany(requestor, property);
    if (writeMeta(requestor, target, property))
        return true;
    const auto form = std::ranges::find(m_content, target, &X11SelectionForm::target);
    if (form == m_content.end())
        return false;
    std::function<void()> done;
    if (m_served)
        done = [served = m_served, requestor, target] { served(requestor, target); };
    return m_transfers.send(requestor, property, *form, std::move(done));
}

bool X11SelectionOwner::writeMeta(unsigned long requestor, unsigned long target, unsigned long property)
{
    X11ErrorTrap trap(m_connection);
    std::vector<unsigned long> values;
    Atom type = XA_ATOM;
    if (target == m_connection.atom("TARGETS")) {
        for (const auto* name : {"TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS"})
            values.push_back(m_connection.atom(name));
        for (const auto& form : m_content)
            values.push_back(form.target);
    } else if (target == m_connection.atom("TIMESTAMP")) {
        values.push_back(m_ownedSince);
        type = XA_INTEGER;
    } else if (target == m_connection.atom("SAVE_TARGETS")) {
        type = m_connection.atom("NULL"); // asked of a clipboard manager; an owner only says that it knows the word
    } else {
        return false;
    }
    XChangeProperty(m_connection.display(), requestor, property, type, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(values.data()), static_cast<int>(values.size()));
    return trap.finish() == 0;
}

bool X11SelectionOwner::convertMany(unsigned long requestor, unsigned long property)
{
    constexpr long kMost = 512;
    const Atom pair = m_connection.atom("ATOM_PAIR");
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    X11ErrorTrap trap(m_connection);
    if (XGetWindowProperty(m_connection.display(), requestor, property, 0, kMost, False, AnyPropertyType, &type,
                           &format, &count, &rest, &data) != Success ||
        data == nullptr)
        return false;
    std::vector<unsigned long> wanted;
    if (format == 32)
        wanted.assign(reinterpret_cast<unsigned long*>(data), reinterpret_cast<unsigned long*>(data) + count / 2 * 2);
    XFree(data);
    for (std::size_t index = 0; index + 1 < wanted.size(); index += 2) {
        const bool isNested = wanted[index] == m_connection.atom("MULTIPLE");
        if (isNested || !convert(requestor, wanted[index], wanted[index + 1]))
            wanted[index + 1] = None;
    }
    XChangeProperty(m_connection.display(), requestor, property, pair, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(wanted.data()), static_cast<int>(wanted.size()));
    return trap.finish() == 0;
}

} // namespace vocalith
