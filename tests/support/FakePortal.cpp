#include "tests/support/FakePortal.h"

#include "tests/support/FakePortalService_p.h"

#include <algorithm>

namespace vocalith::test {

using namespace fake_portal;

FakePortal::FakePortal(Desktop desktop) : m_service(std::make_unique<Service>(desktop, m_bus.address()))
{}

FakePortal::~FakePortal() = default;

const std::vector<std::string>& FakePortal::calls() const
{
    return m_service->calls;
}

int FakePortal::count(const std::string& call) const
{
    return static_cast<int>(std::ranges::count(m_service->calls, call));
}

const std::string& FakePortal::applicationID() const
{
    return m_service->applicationID;
}

const std::vector<FakePortal::Shortcut>& FakePortal::shortcuts() const
{
    return m_service->shortcuts;
}

int FakePortal::openSessions() const
{
    return static_cast<int>(m_service->sessions.size());
}

int FakePortal::questions() const
{
    return m_service->questions;
}

const std::vector<std::string>& FakePortal::keys() const
{
    return m_service->keys;
}

void FakePortal::press(const std::string& shortcut)
{
    m_service->emitFor("GlobalShortcuts", "Activated", m_service->shortcutSession,
                       {QString::fromStdString(shortcut), QVariant::fromValue(quint64{1}), QVariantMap()});
}

void FakePortal::release(const std::string& shortcut)
{
    m_service->emitFor("GlobalShortcuts", "Deactivated", m_service->shortcutSession,
                       {QString::fromStdString(shortcut), QVariant::fromValue(quint64{2}), QVariantMap()});
}

void FakePortal::chooseTrigger(const std::string& shortcut, const std::string& description)
{
    for (auto& one : m_service->shortcuts) {
        if (one.id == shortcut)
            one.trigger = description;
    }
    m_service->emitFor("GlobalShortcuts", "ShortcutsChanged", m_service->shortcutSession,
                       {Service::listOf(m_service->shortcuts)});
}

void FakePortal::endSessions()
{
    for (const auto& session : std::exchange(m_service->sessions, {}))
        m_service->bus.send(QDBusMessage::createSignal(session, prefix + "Session", "Closed"));
}

void FakePortal::leaveBus()
{
    m_service->bus.unregisterService("org.freedesktop.portal.Desktop");
}

void FakePortal::copy(std::map<std::string, std::string> content)
{
    m_service->ours.clear();
    m_service->content = std::move(content);
    m_service->tellOwner();
}

void FakePortal::stopAnswering()
{
    m_service->isAnswering = false;
}

std::shared_ptr<FakePortal::Pasted> FakePortal::paste(const std::string& type)
{
    const auto serial = static_cast<unsigned>(m_service->transfers.size() + 1);
    auto pasted = std::make_shared<Pasted>();
    m_service->transfers[serial].pasted = pasted;
    m_service->emitFor("Clipboard", "SelectionTransfer", m_service->clipboardSession,
                       {QString::fromStdString(type), serial});
    return pasted;
}

std::vector<std::string> FakePortal::offered() const
{
    return m_service->ours;
}

} // namespace vocalith::test
