#include "core/pipeline/steps/BashScriptStep.h"

#include "base/Text.h"
#include "ports/Notices.h"

#include <fmt/format.h>

namespace vocalith {
namespace {

using Stage = BashScriptStep::Stage;

constexpr std::size_t kMostOfAComplaint = 500; // bytes, in messages

std::string word(Stage stage)
{
    return stage == Stage::before ? "pre-processing" : "post-processing";
}

const std::string& scriptOf(const AIPrompt& prompt, Stage stage)
{
    return stage == Stage::before ? prompt.preAIPromptScript : prompt.postAIPromptScript;
}

std::string scriptName(const TranscriptProcessingContext& context, Stage stage)
{
    const auto* prompt = activePrompt(context);
    return fmt::format("The script {} the AI of {}", stage == Stage::before ? "before" : "after",
                       prompt && !prompt->name.empty() ? "the prompt \"" + prompt->name + "\"" : "this prompt");
}

std::string firstOf(const std::string& text)
{
    if (text.size() <= kMostOfAComplaint)
        return text;
    std::size_t end = kMostOfAComplaint;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) // in the middle of a character
        --end;
    return text.substr(0, end) + "…";
}

/// "status 127: zsh: command not found: tidy"
std::string failureOf(const BashScriptService::BashResult& result)
{
    const auto complaint = cleanText(firstOf(result.error), ' ');
    return fmt::format("status {}{}{}", result.exitCode, complaint.empty() ? "" : ": ", complaint);
}

std::string silenceOf(const BashScriptService::BashResult& result, const std::string& script)
{
    if (result.exitCode == 0)
        return script + " printed nothing, so nothing was inserted.";
    return fmt::format("{} failed ({}) and printed nothing, so nothing was inserted.", script, failureOf(result));
}

} // namespace

Task<Result<bool, StepFailure>> BashScriptStep::run(TranscriptProcessingContext& context)
{
    const auto* prompt = activePrompt(context);
    if (!prompt || trimmedView(scriptOf(*prompt, m_stage)).empty())
        co_return false;
    m_logger.info("Executing bash script for transcript " + word(m_stage));
    const auto result = co_await m_scripts.run(context.transcript, scriptOf(*prompt, m_stage), timeout);
    if (result)
        co_return use(*result, context);
    if (result.error().kind == BashScriptError::Kind::cancelled)
        co_return failure(StepFailure{"Cancelled"});
    if (result.error().kind == BashScriptError::Kind::tooMuchOutput)
        co_return leaveTheText(context, "printed more than 128 MiB and was ended.");
    co_return leaveTheText(context, "could not be started (" + result.error().detail + ").");
}

/// Yields whether the run ends.
Result<bool, StepFailure> BashScriptStep::use(const BashScriptService::BashResult& result,
                                              TranscriptProcessingContext& context) const
{
    if (!result.output.empty())
        note(context, "", result.output);
    if (!result.error.empty())
        note(context, "_error", result.error);
    if (result.timedOut) {
        m_logger.warning("Bash script timed out during " + word(m_stage) + ". Continuing with original transcript");
        return leaveTheText(context, fmt::format("took longer than {:g} seconds and was ended.", timeout));
    }
    if (result.exitCode != 0) {
        note(context, "_status", std::to_string(result.exitCode));
        m_logger.warning("Bash script failed during " + word(m_stage) + ", " + failureOf(result));
    }
    const auto text = trimmedView(result.output);
    if (text.empty()) {
        m_logger.info("Bash script produced no output during " + word(m_stage) + ". Stopping pipeline");
        context.endReason = silenceOf(result, scriptName(context, m_stage));
        context.hasEndedInFailure = result.exitCode != 0;
        return true;
    }
    context.transcript = text;
    m_logger.info("Bash script successfully processed transcript during " + word(m_stage));
    return false;
}

bool BashScriptStep::leaveTheText(TranscriptProcessingContext& context, const std::string& what) const
{
    const auto message = scriptName(context, m_stage) + " " + what + " The text was left as it was.";
    note(context, "_problem", message);
    m_notices.show(message);
    return false;
}

/// Under the label of the stage with that suffix.
void BashScriptStep::note(TranscriptProcessingContext& context, std::string_view suffix, std::string text) const
{
    const std::string label = m_stage == Stage::before ? "bash_script" : "post_bash_script";
    context.diagnostics.push_back({label + std::string(suffix), std::move(text)});
}

} // namespace vocalith
