#pragma once

#include "base/Observable.h"
#include "core/storage/settings/AnySetting.h"
#include "core/storage/settings/rules/SettingRule.h"

#include <functional>
#include <utility>

namespace vocalith {

class SettingsFile;

/// One setting of the user: its value now, kept in the settings file under its key. Member of `PersistentAppStorage`;
/// main thread only.
template <class T>
class Setting final : public AnySetting {
public:
    /// Takes the stored value, or `fallback` when there is none or none that can be used.
    Setting(SettingsFile& file, const char* key, T fallback = {}, SettingRule<T> rule = {});

    const T& get() const { return m_value.get(); }

    /// Stores the value at once (with others at the end of a batch), then tells the observers if it is another one. A
    /// value that cannot be stored holds until the program ends. An empty optional removes the entry. Elements of a
    /// stored list that this version cannot read stay in it.
    void set(T value)
    {
        m_store(value);
        m_value.set(std::move(value));
    }

    /// Told of every later change, also by another process; not of the value as it stands.
    Subscription subscribe(typename Signal<T>::Observer observer) { return m_value.subscribe(std::move(observer)); }

    const std::string& key() const override { return m_key; }
    bool isChoice() const override { return m_rule.isChoice; }
    bool holdsSecrets() const override;
    std::string description() const override;
    std::vector<std::string> words() const override;
    Json json() const override;
    Json defaultJson() const override;
    std::string text() const override;
    Result<Json, std::string> parse(const std::string& text) const override;
    Result<void, std::string> check(const Json& value) const override;
    void assign(const Json& value) override;
    void reset() override;
    void reload() override { m_value.set(read()); }

private:
    T read() const;
    Result<T, std::string> decoded(const Json& value) const;

    SettingsFile& m_file;
    const std::string m_key;
    const T m_fallback;
    const SettingRule<T> m_rule;
    Observable<T> m_value;
    std::function<void(const T&)> m_store;
};

} // namespace vocalith
