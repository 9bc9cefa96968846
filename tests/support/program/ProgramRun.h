#pragma once

#include "tests/support/MainLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <QProcess>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vocalith::test {

struct Ended {
    int code = -1;
    std::string out;
    std::string err;
};

/// What a run of the program finds around it.
struct Surroundings {
    std::map<std::string, std::string> environment{}; ///< in addition; an empty value takes a variable away
    std::string output{};                             ///< the file that standard output is, if not a pipe
    std::vector<int> closed{};                        ///< standard streams that there are not
    int terminal = -1;                                ///< a terminal's descriptor for all three standard streams
};

/// One run of the program that may still go on.
class ProgramRun {
public:
    ProgramRun(const std::filesystem::path& home, const std::vector<std::string>& arguments,
               const Surroundings& surroundings = {});

    QProcess& process() { return m_process; }
    Ended wait();

private:
    QProcess m_process;
};

/// A terminal of 60 columns, with the program on it.
class ProgramOnTerminal {
public:
    ProgramOnTerminal(const std::filesystem::path& home, const std::vector<std::string>& arguments);
    ~ProgramOnTerminal();

    void waitFor(const std::string& text);
    void type(const std::string& keys) const;
    /// Yields the exit code.
    int wait();
    const std::string& screen() const { return m_screen; } ///< all that was written

private:
    void read();

    int m_master = -1;
    int m_slave = -1;
    std::unique_ptr<ProgramRun> m_run;
    std::string m_screen;
};

} // namespace vocalith::test
