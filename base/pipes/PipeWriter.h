#pragma once

#include "base/FileDescriptor.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vocalith {

/// Hands bytes to readers that take them at their own pace. Main thread; destroying it ends what still goes on without
/// telling anybody. The program ignores SIGPIPE.
class PipeWriter {
public:
    /// Called once, from the event loop, with whether the reader has taken everything.
    using Done = std::function<void(bool isComplete)>;

    PipeWriter();
    ~PipeWriter();
    PipeWriter(const PipeWriter&) = delete;
    PipeWriter& operator=(const PipeWriter&) = delete;

    void write(FileDescriptor pipe, std::shared_ptr<const std::string> bytes, Done done);

private:
    class Job;
    std::vector<std::unique_ptr<Job>> m_jobs;
};

} // namespace vocalith
