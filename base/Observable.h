#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vocalith {

/// Ends an observation when it is destroyed or reset. It may outlive what it observes.
class [[nodiscard]] Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::shared_ptr<void> observer) : m_observer(std::move(observer)) {}

    void reset() { m_observer.reset(); }

private:
    std::shared_ptr<void> m_observer;
};

/// Something that happens, told to all who subscribed at the time. Main thread only. An observer may subscribe,
/// unsubscribe (itself or others) and emit again while it is told; one that was unsubscribed is not told any more.
template <class... Args>
class Signal {
public:
    using Observer = std::function<void(const Args&...)>;

    Signal() = default;
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    Subscription subscribe(Observer observer)
    {
        auto owned = std::make_shared<Observer>(std::move(observer));
        m_observers.push_back(owned);
        return Subscription(std::move(owned));
    }

    void emit(const Args&... args)
    {
        std::erase_if(m_observers, [](const auto& observer) { return observer.expired(); });
        const auto told = m_observers;
        for (const auto& observer : told) {
            if (const auto alive = observer.lock())
                (*alive)(args...);
        }
    }

private:
    std::vector<std::weak_ptr<Observer>> m_observers;
};

/// A value that tells its observers when it changes, and of nothing else. Main thread only.
template <class T>
class Observable {
public:
    Observable() = default;
    explicit Observable(T value) : m_value(std::move(value)) {}

    const T& get() const { return m_value; }

    void set(T value)
    {
        if (value == m_value)
            return;
        m_value = std::move(value);
        const T published = m_value;
        m_changed.emit(published);
    }

    /// Told of every later change, not of the value as it stands.
    Subscription subscribe(typename Signal<T>::Observer observer) { return m_changed.subscribe(std::move(observer)); }

private:
    T m_value{};
    Signal<T> m_changed;
};

} // namespace vocalith
