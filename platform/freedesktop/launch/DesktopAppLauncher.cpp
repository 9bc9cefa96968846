#include "platform/freedesktop/launch/DesktopAppLauncher.h"

#include "base/OneShot.h"
#include "base/Text.h"
#include "platform/freedesktop/launch/DesktopEntry_p.h"

#include <QString>
#include <QVariantMap>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>

#include <fmt/format.h>

#include <array>

namespace vocalith {
namespace {

using Kind = AppLaunchError::Kind;
using Outcome = Result<void, AppLaunchError>;
using namespace std::chrono_literals;

// Long enough to be told that there is nothing to open it with. Where xdg-open becomes the browser itself it ends when
// the user closes that.
constexpr Duration kOpening = 3s;
constexpr Duration kStarting = 2s;

constexpr std::string_view kOfOneDesktop = "shortcuts"; ///< no other knows it but by a handler

/// The exit codes of xdg-open(1).
enum XdgOpenCode { noSuchFile = 2, noProgram = 3 };

/// "https" of "https://example.org"; empty for a path.
std::string schemeOf(const std::string& url)
{
    const auto end = url.find_first_of(":/?#");
    return end == std::string::npos || url[end] != ':' ? "" : asciiLowerCase(url.substr(0, end));
}

/// Without a handler xdg-open gives any address to a browser, which then shows nothing, and calls that a success. It
/// leaves what is usual, and desktops that know addresses by other means, to themselves.
bool isOpenable(const std::string& scheme)
{
    constexpr std::array<std::string_view, 5> kUsual = {"", "http", "https", "ftp", "file"};
    if (std::ranges::find(kUsual, scheme) != kUsual.end())
        return true;
    const bool hasOtherMeans = qgetenv("XDG_CURRENT_DESKTOP").contains("KDE") && scheme != kOfOneDesktop;
    return hasOtherMeans || isSchemeHandled(scheme);
}

Outcome outcomeOf(const ProgramState& state, const std::string& program)
{
    if (state.isCancelled)
        return failure(AppLaunchError{Kind::cancelled});
    if (state.exitCode.value_or(0) == 0)
        return {};
    const auto why = state.complaint.empty() ? fmt::format("{} ended at once with exit code {} and does not say why.",
                                                           program, *state.exitCode)
                                             : fmt::format("{} says: {}", program, state.complaint);
    return failure(AppLaunchError{Kind::failed, why});
}

Outcome outcomeOfOpening(const ProgramState& state)
{
    if (state.exitCode == noSuchFile)
        return failure(AppLaunchError{Kind::failed, "There is no such file."});
    if (state.exitCode == noProgram)
        return failure(AppLaunchError{Kind::notFound, "This desktop has no program that opens it. Install one."});
    return outcomeOf(state, "xdg-open");
}

AppLaunchError noSuchApplication(const std::string& id)
{
    const auto near = id.find('\0') == std::string::npos ? DesktopEntry::nearest(id) : "";
    return {Kind::notFound,
            fmt::format("There is no application with the desktop entry \"{}\", or its program is not installed.{}", id,
                        near.empty() ? "" : fmt::format(" Did you mean \"{}\"?", near))};
}

/// As the specification has it for "D-Bus Activation".
QDBusMessage activation(const std::string& id)
{
    auto path = QStringLiteral("/") + QString::fromStdString(id);
    path.replace(QLatin1Char('.'), QLatin1Char('/')).replace(QLatin1Char('-'), QLatin1Char('_'));
    auto message = QDBusMessage::createMethodCall(
        QString::fromStdString(id), path, QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"));
    message << QVariantMap();
    return message;
}

} // namespace

DesktopAppLauncher::DesktopAppLauncher(Clock& clock)
    : m_clock(clock), m_programs(std::make_unique<DetachedPrograms>(clock))
{}

DesktopAppLauncher::DesktopAppLauncher(Clock& clock, const QDBusConnection& bus) : DesktopAppLauncher(clock)
{
    m_bus = std::make_unique<QDBusConnection>(bus);
}

DesktopAppLauncher::~DesktopAppLauncher() = default;

Task<Outcome> DesktopAppLauncher::openURL(std::string url)
{
    if (url.empty() || url.front() == '-' || url.find('\0') != std::string::npos)
        co_return failure(AppLaunchError{Kind::failed, "That is no address."});
    const auto scheme = schemeOf(url);
    if (!isOpenable(scheme))
        co_return failure(AppLaunchError{
            Kind::notFound, fmt::format("No program here opens addresses that begin with \"{}:\".", scheme)});
    std::vector<std::string> words{"xdg-open", url};
    const auto state = co_await m_programs->run(std::move(words), kOpening);
    if (state)
        co_return outcomeOfOpening(*state);
    if (state.error() == std::errc::no_such_file_or_directory)
        co_return failure(AppLaunchError{Kind::failed, "xdg-open is missing. Install the package xdg-utils."});
    co_return failure(AppLaunchError{Kind::failed, "xdg-open cannot be started: " + state.error().message() + "."});
}

Task<Outcome> DesktopAppLauncher::launchApp(std::string bundleID)
{
    const auto entry = DesktopEntry::find(bundleID);
    if (!entry)
        co_return failure(noSuchApplication(bundleID));
    if (entry->isDBusActivatable()) {
        if (!m_bus)
            m_bus = std::make_unique<QDBusConnection>(QDBusConnection::sessionBus());
        if (m_bus->isConnected())
            co_return co_await activate(entry->id());
    }
    Complaints complaints;
    const auto id = entry->start(complaints);
    if (!id)
        co_return failure(AppLaunchError{Kind::failed, id.error()});
    if (*id == 0)
        co_return Outcome(); // the library found another way than a program of its own
    const auto state = co_await m_programs->watch(*id, std::move(complaints), kStarting);
    co_return outcomeOf(state, entry->id());
}

Task<Outcome> DesktopAppLauncher::activate(std::string id)
{
    OneShot<std::string> answered;
    const auto resolve = answered.resolver();
    QDBusPendingCallWatcher call(m_bus->asyncCall(activation(id)));
    QObject::connect(&call, &QDBusPendingCallWatcher::finished, &call, [resolve](QDBusPendingCallWatcher* answer) {
        const QDBusPendingReply<> reply = *answer;
        resolve(reply.isError() ? reply.error().message().toStdString() : std::string());
    });
    const auto timer = m_clock.after(kOpening, [resolve] { resolve(""); }); // it is still on its way
    const auto error = co_await answered;
    if (!error)
        co_return failure(AppLaunchError{Kind::cancelled});
    if (!error->empty())
        co_return failure(AppLaunchError{Kind::failed, "The session bus says: " + *error});
    co_return Outcome();
}

} // namespace vocalith
