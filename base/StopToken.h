#pragma once

#include <stop_token>

namespace vocalith {

/// The standard's cooperative cancellation: a source asks, tokens are asked, callbacks are told. A stop is requested on
/// the main thread only, so callbacks that the main thread registers never run beside it.
using StopToken = std::stop_token;
using StopSource = std::stop_source;
template <class Callback>
using StopCallback = std::stop_callback<Callback>;

} // namespace vocalith
