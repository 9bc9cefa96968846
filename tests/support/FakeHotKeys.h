#pragma once

#include "models/ModifierFlags.h"
#include "ports/HotKeys.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace vocalith::test {

/// A keyboard without keys: the test presses what is registered. Main thread.
class FakeHotKeys final : public HotKeys {
public:
    /// Keys that cannot be had, and why.
    std::vector<std::pair<KeyboardShortcut::Keys, HotKeyError>> refused;
    /// When set, the modifier keys cannot be watched.
    std::optional<HotKeyError> monitorError;
    bool isOnDemand = true;

    Result<Subscription, HotKeyError> registerHotKey(const HotKey& hotKey, Handler handler) override
    {
        const auto refusal = std::ranges::find(refused, hotKey.keys, [](const auto& each) { return each.first; });
        if (refusal != refused.end())
            return failure(refusal->second);
        auto registration = std::make_shared<Registration>(Registration{hotKey, std::move(handler)});
        m_registrations.push_back(registration);
        m_asked.push_back(hotKey);
        return Subscription(std::move(registration));
    }
    bool takesKeysOnDemand() const override { return isOnDemand; }
    Result<Subscription, HotKeyError> monitorModifiers(std::function<void(const ModifierChange&)> handler) override
    {
        if (monitorError)
            return failure(*monitorError);
        auto watcher = std::make_shared<Subscription>(m_modifiers.subscribe(std::move(handler)));
        m_watcher = watcher;
        return Subscription(std::move(watcher));
    }

    /// What happens at the keyboard. False when nobody has registered the keys.
    bool press(const KeyboardShortcut::Keys& keys) { return change(keys, true); }
    bool release(const KeyboardShortcut::Keys& keys) { return change(keys, false); }
    void hold(std::uint64_t rawFlags, bool otherKeyDown = false) { m_modifiers.emit({rawFlags, otherKeyDown}); }

    bool isMonitoring() const { return !m_watcher.expired(); }
    /// Whether the keys are taken from the desktop now.
    bool has(const KeyboardShortcut::Keys& keys) const { return find(keys) != nullptr; }
    std::size_t count() const
    {
        return std::size_t(std::ranges::count_if(m_registrations, [](const auto& each) { return !each.expired(); }));
    }
    /// Every registration that succeeded, in order.
    const std::vector<HotKey>& asked() const { return m_asked; }

private:
    struct Registration {
        HotKey hotKey;
        Handler handler;
    };

    std::shared_ptr<Registration> find(const KeyboardShortcut::Keys& keys) const
    {
        for (const auto& each : m_registrations) {
            if (auto registration = each.lock(); registration && registration->hotKey.keys == keys)
                return registration;
        }
        return nullptr;
    }
    bool change(const KeyboardShortcut::Keys& keys, bool isDown)
    {
        const auto registration = find(keys);
        if (registration)
            registration->handler(isDown);
        return registration != nullptr;
    }

    std::vector<std::weak_ptr<Registration>> m_registrations;
    std::vector<HotKey> m_asked;
    Signal<ModifierChange> m_modifiers;
    std::weak_ptr<Subscription> m_watcher;
};

} // namespace vocalith::test
