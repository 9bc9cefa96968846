#pragma once

#include "platform/pulse/PulseTimes.h"

namespace vocalith::test {

/// Times that a busy machine keeps too, for whatever is to go well.
constexpr PulseTimes kPatient{
    .connect = std::chrono::seconds(20),
    .answer = std::chrono::seconds(20),
    .firstData = std::chrono::seconds(20),
    .stall = std::chrono::seconds(8),
    .replacement = std::chrono::seconds(20),
    .linger = std::chrono::milliseconds(100),
    .farewell = std::chrono::seconds(20),
};

} // namespace vocalith::test
