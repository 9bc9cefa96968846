#pragma once

#include "base/Clock.h"
#include "base/FileDescriptor.h"

#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <sys/types.h>

namespace vocalith {

/// What a program writes to standard error. It is in memory, which is given back when the program ends: a pipe without
/// a reader would end the program, and many end by themselves when they cannot write.
class Complaints {
public:
    Complaints();

    /// For the program's standard error; closed with this.
    int descriptor() const { return m_file.get(); }
    /// The end of what it wrote, as one line for people.
    std::string text() const;
    void close();

private:
    FileDescriptor m_file;
};

/// How it goes with a program after a while.
struct ProgramState {
    bool isCancelled = false;    ///< the awaiting task was asked to stop
    std::optional<int> exitCode; ///< as a shell gives it: 128 and the signal that ended it; absent while it runs
    std::string complaint;       ///< what it wrote to standard error; empty while it runs
};

/// Starts programs that outlive this one: each leads a session of its own, without a terminal, without this program's
/// files, with nothing to read and with nobody who reads what it writes. Main thread.
class DetachedPrograms {
public:
    explicit DetachedPrograms(Clock& clock);
    ~DetachedPrograms();
    DetachedPrograms(const DetachedPrograms&) = delete;
    DetachedPrograms& operator=(const DetachedPrograms&) = delete;

    /// Starts `words[0]`, which is looked up in PATH unless it has a slash, in the user's folder; an executable text
    /// that does not say what reads it is read by /bin/sh. Waits until it has ended, at most as long as `patience`. The
    /// error says why it could not be started.
    Task<Result<ProgramState, std::error_code>> run(std::vector<std::string> words, Duration patience);

    /// The same for a child that somebody else has started, which is reaped here.
    Task<ProgramState> watch(pid_t id, Complaints complaints, Duration patience);

private:
    struct Child;

    Clock& m_clock;
    std::vector<std::unique_ptr<Child>> m_children; ///< and those that have ended since the last start
};

} // namespace vocalith
