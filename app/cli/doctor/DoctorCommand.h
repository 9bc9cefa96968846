#pragma once

#include "app/cli/Options.h"
#include "base/Task.h"
#include "ports/Diagnostics.h"

#include <functional>
#include <vector>

namespace vocalith {

class Terminal;

/// `vocalith doctor`: asks every part of the program what it found and prints the report. The exit code says whether
/// a dictation can work.
class DoctorCommand {
public:
    DoctorCommand(DoctorOptions options, std::vector<std::reference_wrapper<Diagnostics>> parts, Terminal& terminal);

    Task<int> run();

private:
    std::string report(const std::vector<Finding>& findings) const;

    const DoctorOptions m_options;
    const std::vector<std::reference_wrapper<Diagnostics>> m_parts;
    Terminal& m_terminal;
};

} // namespace vocalith
