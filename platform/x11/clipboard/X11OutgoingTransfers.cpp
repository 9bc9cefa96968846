#include "platform/x11/X11Connection.h"
#include "platform/x11/clipboard/X11SelectionOwner_p.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace vocalith {
namespace {

/// The server copies a piece in far less than a millisecond.
constexpr std::size_t kPiece = 256 * 1024;
constexpr auto kPatience = std::chrono::seconds(10);

/// Xlib takes units of 32 bits as longs.
std::vector<unsigned long> asLongs(const char* bytes, std::size_t count)
{
    std::vector<unsigned long> units(count);
    for (auto& unit : units) {
        std::uint32_t value = 0;
        std::memcpy(&value, bytes, sizeof value);
        bytes += sizeof value;
        unit = value;
    }
    return units;
}

} // namespace

std::size_t X11OutgoingTransfers::pieceSize() const
{
    auto* const display = m_connection.display();
    const auto most = std::max(XMaxRequestSize(display), XExtendedMaxRequestSize(display));
    return std::min(kPiece, static_cast<std::size_t>(most - 64) * 4);
}

bool X11OutgoingTransfers::send(unsigned long requestor, unsigned long property, const X11SelectionForm& form,
                                std::function<void()> done)
{
    X11ErrorTrap trap(m_connection);
    Transfer transfer{requestor, property, form, std::move(done)};
    if (form.payload->size() <= pieceSize()) {
        write(transfer, form.payload->size());
        const bool isDone = trap.finish() == 0;
        if (isDone && transfer.done)
            transfer.done();
        return isDone;
    }
    const auto size = static_cast<unsigned long>(form.payload->size());
    XSelectInput(m_connection.display(), requestor, PropertyChangeMask | StructureNotifyMask);
    XChangeProperty(m_connection.display(), requestor, property, m_connection.atom("INCR"), 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&size), 1);
    if (trap.finish() != 0)
        return false;
    m_transfers.push_back(std::move(transfer));
    const auto added = std::prev(m_transfers.end());
    added->giveUp = m_clock.after(kPatience, [this, added] { end(added); });
    return true;
}

void X11OutgoingTransfers::handle(const _XEvent& event)
{
    if (event.type == DestroyNotify) {
        std::erase_if(m_transfers,
                      [&](const auto& transfer) { return transfer.requestor == event.xdestroywindow.window; });
        return;
    }
    if (event.type != PropertyNotify || event.xproperty.state != PropertyDelete)
        return;
    const auto found = std::ranges::find_if(m_transfers, [&](const auto& transfer) {
        return transfer.requestor == event.xproperty.window && transfer.property == event.xproperty.atom;
    });
    if (found != m_transfers.end())
        sendPiece(found);
}

void X11OutgoingTransfers::sendPiece(Transfers::iterator transfer)
{
    X11ErrorTrap trap(m_connection);
    const auto length = std::min(pieceSize(), transfer->form.payload->size() - transfer->sent);
    write(*transfer, length); // an empty one says that this was all
    transfer->sent += length;
    const bool isGone = trap.finish() != 0;
    if (length > 0 && !isGone) {
        transfer->giveUp = m_clock.after(kPatience, [this, transfer] { end(transfer); });
        return;
    }
    const auto done = std::move(transfer->done);
    end(transfer);
    if (!isGone && done)
        done();
}

void X11OutgoingTransfers::write(const Transfer& transfer, std::size_t length)
{
    const auto* bytes = transfer.form.payload->data() + transfer.sent;
    const auto unit = static_cast<std::size_t>(transfer.form.format / 8);
    std::vector<unsigned long> longs;
    if (transfer.form.format == 32) {
        longs = asLongs(bytes, length / unit);
        bytes = reinterpret_cast<const char*>(longs.data());
    }
    XChangeProperty(m_connection.display(), transfer.requestor, transfer.property, transfer.form.type,
                    transfer.form.format, PropModeReplace, reinterpret_cast<const unsigned char*>(bytes),
                    static_cast<int>(length / unit));
}

void X11OutgoingTransfers::end(Transfers::iterator transfer)
{
    const auto requestor = transfer->requestor;
    m_transfers.erase(transfer);
    if (std::ranges::find(m_transfers, requestor, &Transfer::requestor) != m_transfers.end())
        return;
    X11ErrorTrap trap(m_connection);
    XSelectInput(m_connection.display(), requestor, NoEventMask);
}

} // namespace vocalith
