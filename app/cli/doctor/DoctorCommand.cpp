#include "app/cli/doctor/DoctorCommand.h"

#include "app/cli/ExitCode.h"
#include "app/cli/terminal/Terminal.h"
#include "base/Json.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace vocalith {
namespace {

using State = Finding::State;

std::string_view word(State state)
{
    switch (state) {
    case State::good: return "good";
    case State::limited: return "limited";
    case State::missing: return "missing";
    }
    return "";
}

Json jsonReport(const std::vector<Finding>& findings)
{
    Json report = Json::array();
    for (const auto& finding : findings)
        report.push_back({{"subject", finding.subject},
                          {"state", word(finding.state)},
                          {"detail", finding.detail},
                          {"remedy", finding.remedy}});
    return report;
}

} // namespace

DoctorCommand::DoctorCommand(DoctorOptions options, std::vector<std::reference_wrapper<Diagnostics>> parts,
                             Terminal& terminal)
    : m_options(options), m_parts(std::move(parts)), m_terminal(terminal)
{}

Task<int> DoctorCommand::run()
{
    std::vector<Finding> findings;
    for (const auto& part : m_parts) {
        auto found = co_await part.get().examine();
        std::move(found.begin(), found.end(), std::back_inserter(findings));
    }
    const std::string text = m_options.json ? dumpJson(jsonReport(findings), 2) + '\n' : report(findings);
    if (writeToStandardOutput(text) != 0)
        m_terminal.line("The report could not be written to standard output.");
    const bool works = std::none_of(findings.begin(), findings.end(),
                                    [](const auto& finding) { return finding.state == State::missing; });
    co_return static_cast<int>(works ? exitSuccess : exitFailure);
}

std::string DoctorCommand::report(const std::vector<Finding>& findings) const
{
    std::size_t width = 0;
    for (const auto& finding : findings)
        width = std::max(width, finding.subject.size());
    std::string text;
    for (const auto& finding : findings) {
        text += fmt::format("{:<8} {:<{}}  {}\n", word(finding.state), finding.subject, width, finding.detail);
        if (!finding.remedy.empty())
            text += fmt::format("{:<8} {:<{}}  → {}\n", "", "", width, finding.remedy);
    }
    return text;
}

} // namespace vocalith
