#include "app/cli/process/RunExplanation.h"

#include "base/Json.h"
#include "base/Text.h"

#include <fmt/format.h>

namespace vocalith {
namespace {

constexpr std::size_t kMostBytes = 2000; // of a text that people look at

std::string quoted(const std::string& text)
{
    auto shown = text.substr(0, kMostBytes);
    while (shown.size() < text.size() && (static_cast<unsigned char>(text[shown.size()]) & 0xC0U) == 0x80U)
        shown.pop_back();                              // the beginning of a character
    auto line = cleanText(dumpJson(Json(shown)), ' '); // there are control characters that JSON does not escape
    if (shown.size() < text.size())
        line += fmt::format(" … ({} bytes in all)", text.size());
    return line;
}

std::string whatItDid(const StepReport& report)
{
    if (report.failure)
        return "failed";
    if (report.endedTheRun)
        return "ended the run";
    return report.before == report.after ? "unchanged" : "changed";
}

} // namespace

ExplainedStep explained(const StepReport& report)
{
    ExplainedStep step{std::string(report.step),
                       report.before != report.after,
                       report.before,
                       report.after,
                       report.diagnostics,
                       report.endedTheRun,
                       std::nullopt};
    if (report.failure)
        step.failure = report.failure->message;
    return step;
}

std::string explanation(const StepReport& report)
{
    auto lines = fmt::format("{:<28}  {}", report.step, whatItDid(report));
    if (report.before != report.after)
        lines += "\n  before: " + quoted(report.before) + "\n  after:  " + quoted(report.after);
    for (const auto& note : report.diagnostics)
        lines += "\n  " + cleanText(note.label, ' ') + ": " + quoted(note.text);
    return lines;
}

} // namespace vocalith
