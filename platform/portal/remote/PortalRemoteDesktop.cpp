#include "platform/portal/remote/PortalRemoteDesktop.h"

#include "platform/portal/bus/PortalConnection.h"
#include "platform/portal/remote/PortalRemoteSession_p.h"

#include <fmt/format.h>

namespace vocalith {
namespace {

constexpr unsigned kKeyboard = 1;     // of the portal's device types
constexpr unsigned kUntilRevoked = 2; // of its ways to remember a permission
const auto kInterface = QString::fromLatin1(portal::remoteDesktop);

KeyEventsError errorOf(const PortalError& error)
{
    using Kind = KeyEventsError::Kind;
    switch (error.kind) {
    case PortalError::Kind::unavailable: return {Kind::unavailable, "It has neither a protocol nor a portal for that."};
    case PortalError::Kind::refused: return {Kind::refused};
    case PortalError::Kind::failed: return {Kind::failed, error.detail};
    case PortalError::Kind::cancelled: break;
    }
    return {Kind::cancelled};
}

} // namespace

PortalRemoteDesktop::State::State(PortalRemoteDesktop& from, PortalBus& through, std::string restoreToken,
                                  StoreToken store, Logger log)
    : owner(from), bus(through), token(std::move(restoreToken)), storeToken(std::move(store)), logger(std::move(log)),
      onVanished(bus.vanished.subscribe([this] { end(); }))
{}

PortalRemoteDesktop::State::~State()
{
    if (!path.isEmpty())
        bus.closeSession(path);
}

void PortalRemoteDesktop::State::end()
{
    onClosed.reset();
    devices = 0;
    isClipboardEnabled = false;
    if (path.isEmpty())
        return;
    path.clear();
    logger.warning("The desktop has ended the session for keys and clipboard");
    owner.ended.emit();
}

Task<Result<void, PortalError>> PortalRemoteDesktop::State::selectDevices()
{
    QVariantMap options{{QStringLiteral("types"), kKeyboard}, {QStringLiteral("persist_mode"), kUntilRevoked}};
    if (!token.empty())
        options.insert(QStringLiteral("restore_token"), QString::fromStdString(token));
    const QString method = QStringLiteral("SelectDevices");
    const QVariantList arguments{session()};
    const auto selected = co_await bus.request(kInterface, method, arguments, options);
    if (!selected)
        co_return failure(selected.error());
    // Must come before the start; where it is not there, the keys still are.
    const QString clipboard = QLatin1String(portal::clipboard);
    const QString ask = QStringLiteral("RequestClipboard");
    const QVariantList session{this->session(), QVariantMap()};
    const auto asked = co_await bus.call(clipboard, ask, session);
    if (!asked)
        logger.info(fmt::format("No clipboard through the portals: {}", asked.error().detail));
    co_return Result<void, PortalError>();
}

Task<Result<void, PortalError>> PortalRemoteDesktop::State::startSession()
{
    const QString method = QStringLiteral("Start");
    const QVariantList arguments{session(), QString()};
    const QVariantMap options;
    const auto started = co_await bus.request(kInterface, method, arguments, options);
    if (!started)
        co_return failure(started.error());
    devices = started->value(QStringLiteral("devices")).toUInt();
    isClipboardEnabled = started->value(QStringLiteral("clipboard_enabled")).toBool();
    token = started->value(QStringLiteral("restore_token")).toString().toStdString();
    storeToken(token);
    co_return Result<void, PortalError>();
}

Task<Result<void, PortalError>> PortalRemoteDesktop::State::open()
{
    const auto created = co_await bus.createSession(kInterface);
    if (!created)
        co_return failure(created.error());
    path = *created;
    onClosed = bus.onClosed(path, [this] { end(); });
    const auto selected = co_await selectDevices();
    if (!selected)
        co_return failure(selected.error());
    const auto started = co_await startSession();
    if (!started)
        co_return failure(started.error());
    if ((devices & kKeyboard) == 0)
        co_return failure(PortalError{PortalError::Kind::refused});
    co_return Result<void, PortalError>();
}

PortalRemoteDesktop::PortalRemoteDesktop(PortalConnection& portals, std::string restoreToken, StoreToken storeToken,
                                         Logger logger)
    : m_state(std::make_unique<State>(*this, portals.bus(), std::move(restoreToken), std::move(storeToken),
                                      std::move(logger)))
{}

PortalRemoteDesktop::~PortalRemoteDesktop() = default;

bool PortalRemoteDesktop::hasKeyboard() const
{
    return (m_state->devices & kKeyboard) != 0;
}

bool PortalRemoteDesktop::hasClipboard() const
{
    return hasKeyboard() && m_state->isClipboardEnabled;
}

Task<Result<void, KeyEventsError>> PortalRemoteDesktop::start()
{
    while (m_state->isStarting) {
        OneShot<bool> answered;
        m_state->waiting.push_back(answered.resolver());
        const auto outcome = co_await answered;
        if (!outcome)
            co_return failure(KeyEventsError{KeyEventsError::Kind::cancelled});
    }
    if (hasKeyboard())
        co_return Result<void, KeyEventsError>();
    m_state->isStarting = true;
    const auto opened = co_await m_state->open();
    m_state->isStarting = false;
    if (!opened && !m_state->path.isEmpty()) {
        m_state->onClosed.reset();
        m_state->devices = 0;
        m_state->bus.closeSession(std::exchange(m_state->path, {}));
    }
    for (const auto& resolve : std::exchange(m_state->waiting, {}))
        resolve(true);
    if (!opened)
        co_return failure(errorOf(opened.error()));
    co_return Result<void, KeyEventsError>();
}

} // namespace vocalith
