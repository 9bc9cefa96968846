#pragma once

#include "base/Observable.h"

#include <functional>
#include <utility>

namespace vocalith {

class SettingsFile;

/// One setting of the user: its value now, kept in the settings file under its key. Member of `PersistentAppStorage`;
/// main thread only.
template <class T>
class Setting {
public:
    /// Takes the stored value, or `fallback` when there is none or none that can be read.
    Setting(SettingsFile& file, const char* key, T fallback = {});

    const T& get() const { return m_value.get(); }

    /// Stores the value at once, then tells the observers if it is another one. A value that cannot be stored holds
    /// until the program ends. An empty optional removes the entry.
    void set(T value)
    {
        m_store(value);
        m_value.set(std::move(value));
    }

    /// Told of every later change, not of the value as it stands.
    Subscription subscribe(typename Signal<T>::Observer observer) { return m_value.subscribe(std::move(observer)); }

private:
    Observable<T> m_value;
    std::function<void(const T&)> m_store;
};

} // namespace vocalith
