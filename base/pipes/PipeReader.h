#pragma once

#include "base/Clock.h"
#include "base/FileDescriptor.h"

#include <memory>
#include <string>
#include <vector>

namespace vocalith {

/// Shared, since it may be large.
using PipeBytes = std::shared_ptr<const std::string>;

/// Something that somebody is about to write into a pipe.
struct PipeSource {
    std::string name;
    FileDescriptor pipe; ///< the reading end; one that is not open has failed
};

struct PipeContent {
    std::string name;
    PipeBytes bytes;
};

struct PipeContents {
    /// Those that came to their end, in the order of the sources. Equal ones share their bytes.
    std::vector<PipeContent> ended;
    bool isComplete = true;
    bool isCancelled = false;
};

/// Reads all pipes to their ends at once, without ever waiting in the main thread. The writers have half a second, and
/// a second more for every 20 MB that has come; what has not ended by then, or does not fit into half a gigabyte, is
/// left out. A stop ends it.
Task<PipeContents> readPipes(Clock& clock, std::vector<PipeSource> sources);

} // namespace vocalith
