#include "platform/portal/remote/PortalPasteboard.h"

#include "base/pipes/PipeReader.h"
#include "base/pipes/PipeWriter.h"
#include "platform/portal/remote/PortalRemoteSession_p.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusUnixFileDescriptor>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <fmt/format.h>

namespace vocalith {
namespace {

using Kind = PasteboardError::Kind;
using Representations = std::vector<PasteboardSnapshot::Representation>;

// What clipboard managers ask for before they keep a copy.
constexpr const char* kTransientMark = "x-kde-passwordManagerHint";
constexpr const char* kTransientValue = "secret";
constexpr std::array kTextTypes{"text/plain;charset=utf-8", "text/plain", "UTF8_STRING", "STRING", "TEXT"};

PasteboardError errorOf(const PortalError& error)
{
    if (error.kind == PortalError::Kind::cancelled)
        return {Kind::cancelled};
    return {Kind::failed, error.detail};
}

PasteboardError unavailable()
{
    return {Kind::unavailable, "Allow clipboard access when the desktop asks about remote control."};
}

/// The list itself or, as GNOME sends it, a structure with nothing else in it.
QStringList typesIn(const QVariant& value)
{
    if (!value.canConvert<QDBusArgument>())
        return value.toStringList();
    const auto argument = value.value<QDBusArgument>();
    QStringList types;
    if (argument.currentType() == QDBusArgument::StructureType) {
        argument.beginStructure();
        argument >> types;
        argument.endStructure();
    } else {
        argument >> types;
    }
    return types;
}

/// A copy, since the answer's own is closed with it.
FileDescriptor descriptorIn(const QVariantList& answer)
{
    const auto descriptor = qvariant_cast<QDBusUnixFileDescriptor>(answer.value(0));
    return FileDescriptor(descriptor.isValid() ? fcntl(descriptor.fileDescriptor(), F_DUPFD_CLOEXEC, 3) : -1);
}

} // namespace

/// The session's clipboard: what others have put there, and what this program has.
class PortalPasteboard::Selection {
public:
    Selection(PortalPasteboard& owner, PortalRemoteDesktop& desktop, Clock& clock, Logger logger);

    bool isUsable() const { return m_desktop.hasClipboard(); }
    Task<Result<PasteboardSnapshot, PasteboardError>> read();
    Task<Result<void, PasteboardError>> set(Representations representations, bool isText);
    std::int64_t changeCount() const { return m_changeCount; }

private:
    void handleOwner(const QDBusMessage& message);
    void handleTransfer(const QDBusMessage& message);
    void write(const PasteboardSnapshot::Representation& representation, unsigned serial, FileDescriptor pipe);
    void finish(unsigned serial, bool isComplete);
    void countChange();

    PortalPasteboard& m_owner;
    PortalRemoteDesktop& m_desktop;
    Clock& m_clock;
    const Logger m_logger;
    std::vector<std::string> m_types;
    bool m_isKnown = false; ///< whether the desktop has told what is there
    bool m_isOurs = false;
    bool m_isText = false; ///< ours is a text to paste
    Representations m_own;
    std::int64_t m_changeCount = 0;
    PipeWriter m_writer;
    const std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
    std::unique_ptr<DBusSignal> m_onOwner;
    std::unique_ptr<DBusSignal> m_onTransfer;
    Subscription m_onEnded;
};

PortalPasteboard::Selection::Selection(PortalPasteboard& owner, PortalRemoteDesktop& desktop, Clock& clock,
                                       Logger logger)
    : m_owner(owner), m_desktop(desktop), m_clock(clock), m_logger(std::move(logger))
{
    auto& bus = desktop.state().bus;
    const QString interface = QLatin1String(portal::clipboard);
    m_onOwner = bus.onSignal(interface, QStringLiteral("SelectionOwnerChanged"),
                             [this](const auto& message) { handleOwner(message); });
    m_onTransfer = bus.onSignal(interface, QStringLiteral("SelectionTransfer"),
                                [this](const auto& message) { handleTransfer(message); });
    m_onEnded = desktop.ended.subscribe([this] { m_isKnown = m_isOurs = false; });
}

void PortalPasteboard::Selection::handleOwner(const QDBusMessage& message)
{
    if (!m_desktop.state().isOf(message))
        return;
    const auto options = qdbus_cast<QVariantMap>(message.arguments().value(1));
    m_types.clear();
    for (const auto& type : typesIn(options.value(QStringLiteral("mime_types"))))
        m_types.push_back(type.toStdString());
    m_isKnown = true;
    m_isOurs = options.value(QStringLiteral("session_is_owner")).toBool();
    if (!m_isOurs) // what this program does is counted when it does it
        countChange();
}

void PortalPasteboard::Selection::handleTransfer(const QDBusMessage& message)
{
    if (!m_desktop.state().isOf(message))
        return;
    const auto type = message.arguments().value(1).toString().toStdString();
    const auto serial = message.arguments().value(2).toUInt();
    const auto found = std::ranges::find(m_own, type, &PasteboardSnapshot::Representation::type);
    if (found == m_own.end())
        return finish(serial, false);
    auto& state = m_desktop.state();
    const QVariantList arguments{state.session(), serial};
    const std::weak_ptr<bool> alive = m_alive;
    state.bus.call(QLatin1String(portal::clipboard), QStringLiteral("SelectionWrite"), arguments,
                   [this, alive, representation = *found, serial](const PortalBus::Answer& answer) {
                       if (alive.expired())
                           return;
                       auto pipe = answer ? descriptorIn(*answer) : FileDescriptor();
                       if (pipe.isOpen())
                           write(representation, serial, std::move(pipe));
                       else
                           finish(serial, false);
                   });
}

void PortalPasteboard::Selection::write(const PasteboardSnapshot::Representation& representation, unsigned serial,
                                        FileDescriptor pipe)
{
    const bool isTold = m_isText && representation.type != kTransientMark;
    m_writer.write(std::move(pipe), representation.payload,
                   [this, serial, isTold, type = representation.type](bool isComplete) {
                       finish(serial, isComplete);
                       if (isTold && isComplete)
                           m_owner.fetched.emit({PasteboardFetch::Reader::unknown, type});
                   });
}

void PortalPasteboard::Selection::finish(unsigned serial, bool isComplete)
{
    auto& state = m_desktop.state();
    const QVariantList arguments{state.session(), serial, isComplete};
    state.bus.call(QLatin1String(portal::clipboard), QStringLiteral("SelectionWriteDone"), arguments,
                   [logger = m_logger](const PortalBus::Answer& answer) {
                       if (!answer)
                           logger.warning(fmt::format("A transfer of the clipboard failed: {}", answer.error().detail));
                   });
}

Task<Result<PasteboardSnapshot, PasteboardError>> PortalPasteboard::Selection::read()
{
    PasteboardSnapshot snapshot;
    snapshot.isComplete = m_isKnown;
    PasteboardSnapshot::Item item;
    if (m_isOurs) {
        item.representations = m_own;
        snapshot.items.push_back(std::move(item));
        co_return snapshot;
    }
    const QString interface = QLatin1String(portal::clipboard);
    const QString method = QStringLiteral("SelectionRead");
    const auto types = m_types;
    for (const auto& type : types) {
        const QVariantList arguments{m_desktop.state().session(), QString::fromStdString(type)};
        const auto answer = co_await m_desktop.state().bus.call(interface, method, arguments);
        if (!answer && answer.error().kind == PortalError::Kind::cancelled)
            co_return failure(PasteboardError{Kind::cancelled});
        std::vector<PipeSource> sources;
        sources.push_back({type, answer ? descriptorIn(*answer) : FileDescriptor()});
        auto contents = co_await readPipes(m_clock, std::move(sources));
        if (contents.isCancelled)
            co_return failure(PasteboardError{Kind::cancelled});
        for (auto& [name, bytes] : contents.ended)
            item.representations.push_back({std::move(name), std::move(bytes)});
        snapshot.isComplete = snapshot.isComplete && contents.isComplete;
        if (answer && !contents.isComplete)
            break; // an owner that does not answer once does not answer again, and time is short
    }
    if (!item.representations.empty())
        snapshot.items.push_back(std::move(item));
    co_return snapshot;
}

Task<Result<void, PasteboardError>> PortalPasteboard::Selection::set(Representations representations, bool isText)
{
    QStringList types;
    for (const auto& representation : representations)
        types << QString::fromStdString(representation.type);
    // Before the call: somebody may ask for it before the answer is here.
    m_own = std::move(representations);
    m_isText = isText;
    auto& state = m_desktop.state();
    const QVariantMap options{{QStringLiteral("mime_types"), types}};
    const QString interface = QLatin1String(portal::clipboard);
    const QString method = QStringLiteral("SetSelection");
    const QVariantList arguments{state.session(), options};
    const auto answer = co_await state.bus.call(interface, method, arguments);
    if (!answer)
        co_return failure(errorOf(answer.error()));
    m_isKnown = true;
    m_isOurs = true;
    countChange();
    co_return Result<void, PasteboardError>();
}

void PortalPasteboard::Selection::countChange()
{
    ++m_changeCount;
    m_owner.changed.emit();
}

PortalPasteboard::PortalPasteboard(PortalRemoteDesktop& desktop, Clock& clock, Logger logger)
    : m_selection(std::make_unique<Selection>(*this, desktop, clock, std::move(logger)))
{}

PortalPasteboard::~PortalPasteboard() = default;

std::int64_t PortalPasteboard::changeCount() const
{
    return m_selection->changeCount();
}

Task<Result<PasteboardSnapshot, PasteboardError>> PortalPasteboard::snapshot()
{
    if (!m_selection->isUsable())
        co_return failure(unavailable());
    co_return co_await m_selection->read();
}

Task<Result<void, PasteboardError>> PortalPasteboard::writeText(std::string text, bool isTransient)
{
    const auto payload = std::make_shared<const std::string>(std::move(text));
    Representations representations;
    for (const auto* type : kTextTypes)
        representations.push_back({type, payload});
    if (isTransient)
        representations.push_back({kTransientMark, std::make_shared<const std::string>(kTransientValue)});
    co_return co_await offer(std::move(representations), true);
}

Task<Result<void, PasteboardError>> PortalPasteboard::restore(PasteboardSnapshot snapshot)
{
    Representations representations;
    for (auto& item : snapshot.items)
        std::ranges::move(item.representations, std::back_inserter(representations));
    co_return co_await offer(std::move(representations), false);
}

Task<Result<void, PasteboardError>> PortalPasteboard::offer(Representations representations, bool isText)
{
    if (!m_selection->isUsable())
        co_return failure(unavailable());
    co_return co_await m_selection->set(std::move(representations), isText);
}

} // namespace vocalith
