#pragma once

#include "models/FileBookmark.h"

#include <cstdint>

namespace vocalith {

/// A recording kept on disk.
struct AudioFile {
    FileBookmark fileBookmark;
    double duration = 0;       ///< seconds
    std::int64_t fileSize = 0; ///< bytes

    bool operator==(const AudioFile&) const = default;
};

constexpr auto jsonFields(JsonType<AudioFile>)
{
    return fields(field("fileBookmark", &AudioFile::fileBookmark), field("duration", &AudioFile::duration),
                  field("fileSize", &AudioFile::fileSize));
}

} // namespace vocalith
