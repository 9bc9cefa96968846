#pragma once

#include <tl/expected.hpp>

#include <type_traits>
#include <utility>

namespace vocalith {

/// The value of an operation that can fail, or the error that says why it did.
template <class T, class E>
using Result = tl::expected<T, E>;

template <class E>
using Failure = tl::unexpected<E>;

/// Makes the failed Result of any value type: `return failure(HistoryError::notFound);`
template <class E>
Failure<std::decay_t<E>> failure(E&& error)
{
    return Failure<std::decay_t<E>>(std::forward<E>(error));
}

/// What an await yields when its task was asked to stop before the awaited thing happened.
struct Cancelled {
    bool operator==(const Cancelled&) const = default;
};

} // namespace vocalith
