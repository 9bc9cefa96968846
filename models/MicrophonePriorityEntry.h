#pragma once

#include "base/JsonFields.h"

#include <string>

namespace vocalith {

/// A microphone in the list of the preferred ones that older versions kept.
struct MicrophonePriorityEntry {
    std::string uid;  ///< as the audio server names it
    std::string name; ///< for people

    bool operator==(const MicrophonePriorityEntry&) const = default;
};

constexpr auto jsonFields(JsonType<MicrophonePriorityEntry>)
{
    return fields(field("uid", &MicrophonePriorityEntry::uid), field("name", &MicrophonePriorityEntry::name));
}

} // namespace vocalith
