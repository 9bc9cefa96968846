#pragma once

#include <chrono>

namespace vocalith {

/// An absolute point in time, in milliseconds: what records store and files name.
using Date = std::chrono::sys_time<std::chrono::milliseconds>;

/// A point in time for measuring intervals; it never jumps.
using Instant = std::chrono::steady_clock::time_point;
using Duration = std::chrono::steady_clock::duration;

/// An interval as the seconds that records and messages use.
constexpr double toSeconds(Duration duration)
{
    return std::chrono::duration<double>(duration).count();
}

} // namespace vocalith
