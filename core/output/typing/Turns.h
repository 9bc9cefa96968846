#pragma once

#include "base/OneShot.h"
#include "base/Task.h"

#include <deque>
#include <memory>
#include <utility>

namespace vocalith {

/// Lets one task at a time through, in the order in which they ask. Part of a service, main thread; turns may outlive
/// it.
class Turns {
    struct State;

public:
    /// Being the one whose turn it is, until this goes.
    class Turn {
    public:
        explicit Turn(std::shared_ptr<State> state) : m_state(std::move(state)) {}
        Turn(Turn&& other) noexcept : m_state(std::move(other.m_state)) {}
        Turn& operator=(Turn&& other) noexcept
        {
            std::swap(m_state, other.m_state);
            return *this;
        }
        ~Turn()
        {
            if (m_state)
                passOn(std::move(m_state));
        }

    private:
        std::shared_ptr<State> m_state;
    };

    /// Waits until all who asked before are done. A stop yields `Cancelled`, and the turn goes to the next.
    Task<Result<Turn, Cancelled>> take()
    {
        OneShot<Turn> turn;
        m_state->waiting.push_back(turn.resolver());
        if (!std::exchange(m_state->isTaken, true))
            passOn(m_state);
        co_return co_await turn;
    }

private:
    struct State {
        bool isTaken = false;
        std::deque<OneShot<Turn>::Resolver> waiting;
    };

    static void passOn(std::shared_ptr<State> state)
    {
        if (state->waiting.empty()) {
            state->isTaken = false;
            return;
        }
        const auto next = state->waiting.front();
        state->waiting.pop_front();
        next(Turn(std::move(state))); // one that does not wait any more drops it, which passes it on
    }

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace vocalith
