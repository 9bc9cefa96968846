#pragma once

#include <chrono>

namespace vocalith {

/// How long the audio server may keep us waiting. A stopped server reports nothing, so time is all that tells.
struct PulseTimes {
    std::chrono::milliseconds connect{3000}; ///< until the server has taken us in, else noServer
    std::chrono::milliseconds answer{5000};  ///< until a whole request is answered, else serverLost
    /// Until a new stream gives its first data. An idle null sink takes 2 s, a Bluetooth headset not much less.
    std::chrono::milliseconds firstData{5000};
    std::chrono::milliseconds stall{3000};       ///< between data of a running stream, else serverLost
    std::chrono::milliseconds replacement{2000}; ///< until another default stands in for one that went away
    /// How long a connection is kept after its last use, so that what comes in quick succession shares it: PipeWire
    /// refuses a few dozen connections at once.
    std::chrono::milliseconds linger{1000};
    /// How long the end of the program is held up until a silenced output is given back.
    std::chrono::milliseconds farewell{200};
};

} // namespace vocalith
