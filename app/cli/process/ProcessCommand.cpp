#include "app/cli/process/ProcessCommand.h"

#include "app/cli/ExitCode.h"
#include "app/cli/recognition/HistoryCommandHint.h"
#include "app/cli/terminal/Terminal.h"
#include "app/cli/terminal/TerminalInput.h"
#include "app/cli/text/NearestWord.h"
#include "base/AtomicFile.h"
#include "base/Clock.h"
#include "base/Json.h"
#include "base/Text.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <QString>

#include <fmt/format.h>

#include <algorithm>
#include <system_error>

#include <unistd.h>

namespace vocalith {
namespace {

using End = PipelineOutcome::End;

constexpr const char* kTyped = "typed"; // stands where a dictation names its voice model

/// Takes the text for the JSON object that is printed when all steps have run.
class HeldText final : public TextOutput {
public:
    explicit HeldText(std::optional<std::string>& text) : m_text(text) {}

    Task<Result<TextDestination, TextOutputError>> deliver(std::string text, ActionMode) override
    {
        m_text = trimmed(text);
        co_return TextDestination::application;
    }

private:
    std::optional<std::string>& m_text;
};

Task<void> store(Task<PipelineOutcome> run, std::optional<PipelineOutcome>& outcome)
{
    auto ended = co_await run;
    outcome = std::move(ended);
}

Result<void, std::string> readScript(const std::optional<std::filesystem::path>& file, std::string& script)
{
    if (!file)
        return {};
    auto text = readWholeFile(*file);
    if (!text)
        return failure("The script \"" + file->string() + "\" cannot be read: " + text.error().reason.message() + ".");
    script = *std::move(text);
    return {};
}

} // namespace

ProcessCommand::ProcessCommand(ProcessOptions options, const TranscriptProcessingServices& services, Clock& clock,
                               Terminal& terminal, const LogService& log)
    : m_options(std::move(options)), m_services(services), m_clock(clock), m_terminal(terminal), m_log(log)
{}

Task<int> ProcessCommand::run()
{
    auto chosen = activationMode();
    if (!chosen)
        co_return complain(chosen.error());
    auto text = input();
    if (!text) {
        complain(text.error());
        co_return static_cast<int>(exitUsage);
    }
    InterruptSignals interrupts; // from here on: before, Ctrl-C ends the program as it stands
    const auto interrupted = interrupts.interrupted.subscribe([this] { m_work.requestStop(); });
    const auto terminated = interrupts.terminated.subscribe([this] { m_work.requestStop(); });
    std::optional<PipelineOutcome> outcome;
    m_work.start(store(process(dictated(*std::move(chosen), *std::move(text))), outcome));
    co_await m_work.untilEmpty();
    co_return report(*outcome);
}

Result<OverlayActivationMode, std::string> ProcessCommand::activationMode() const
{
    if (m_options.journal)
        return VoiceJournal{};
    return prompt();
}

Result<AIPrompt, std::string> ProcessCommand::prompt() const
{
    const auto main = m_services.appStorage.mainPrompt.get();
    auto known = m_services.appStorage.aiPrompts.get();
    known.insert(known.begin(), main);
    std::vector<std::string> names{"main"};
    std::optional<AIPrompt> chosen;
    if (m_options.prompt.empty()) {
        const auto wanted = m_services.appStorage.storedPromptID.get();
        const auto found = std::ranges::find_if(known, [&](const auto& one) { return wanted == one.id; });
        chosen = found == known.end() ? main : *found;
    } else if (sameIgnoringCase(m_options.prompt, names.front())) {
        chosen = main;
    }
    for (const auto& one : known) {
        names.push_back(one.name);
        if (!chosen && sameIgnoringCase(one.name, m_options.prompt))
            chosen = one;
    }
    if (!chosen) {
        const auto near = nearestWord(m_options.prompt, names);
        return failure(fmt::format("There is no prompt \"{}\".{} \"vocalith shortcuts\" lists them.", m_options.prompt,
                                   near.empty() ? "" : fmt::format(" Did you mean \"{}\"?", near)));
    }
    auto read = readScript(m_options.beforeScript, chosen->preAIPromptScript);
    if (read)
        read = readScript(m_options.afterScript, chosen->postAIPromptScript);
    if (!read)
        return failure(std::move(read.error()));
    return *std::move(chosen);
}

/// What is on standard input, as a recognised text would be: UTF-8, without the white space around it.
Result<std::string, std::string> ProcessCommand::input()
{
    if (::isatty(STDIN_FILENO) == 1)
        m_terminal.line("Type the text, and end it with Ctrl-D on a line of its own:");
    const auto bytes = readStandardInput();
    if (!bytes)
        return failure("Standard input cannot be read: " + bytes.error().reason.message() + ".");
    auto text = trimmed(QString::fromUtf8(*bytes).toStdString());
    if (text.empty())
        return failure(std::string("There is no text on standard input. Give it some: "
                                   "echo \"some words\" | vocalith process"));
    return text;
}

TranscriptProcessingContext ProcessCommand::dictated(OverlayActivationMode mode, std::string text) const
{
    TranscriptProcessingContext context;
    context.sessionID = Uuid::random();
    context.creationDate = m_clock.now();
    context.dictationResult.id = context.sessionID;
    context.dictationResult.transcriptionData = {std::string(kTyped), {{Uuid::random(), text, 0, 0, std::nullopt}}};
    context.activationMode = std::move(mode);
    context.transcript = std::move(text);
    return context;
}

Task<PipelineOutcome> ProcessCommand::process(TranscriptProcessingContext context)
{
    HeldText held(m_explained.text);
    auto& output = m_options.json ? static_cast<TextOutput&>(held) : m_services.output;
    TranscriptProcessingServices services{output,
                                          m_services.appStorage,
                                          m_services.notices,
                                          m_services.rules,
                                          m_options.history ? m_services.history : nullptr,
                                          m_services.typing};
    TranscriptProcessingService::Observer observer;
    if (m_options.json)
        observer = [this](const StepReport& step) { m_explained.steps.push_back(explained(step)); };
    else if (m_options.explain)
        observer = [this](const StepReport& step) { m_terminal.line(explanation(step)); };
    TranscriptProcessingService pipeline(TranscriptProcessingService::defaultSteps(services, m_log),
                                         std::move(observer));
    co_return co_await pipeline.run(std::move(context));
}

int ProcessCommand::report(const PipelineOutcome& outcome)
{
    noteTheHistory(outcome);
    if (m_options.json) {
        const int code = printJson(outcome);
        if (code != exitSuccess)
            return code;
    }
    switch (outcome.end) {
    case End::complete:
        if (outcome.context.destination)
            return exitSuccess;
        return outcome.context.transcript.empty() ? reportTheEnd(outcome) : exitFailure; // the output has said why
    case End::early: return reportTheEnd(outcome);
    case End::failed:
        complain(outcome.failure ? outcome.failure->message : std::string("A step failed."));
        m_terminal.line("The text was: " + cleanText(outcome.context.transcript, ' '));
        return exitFailure;
    case End::cancelled: m_terminal.line("Cancelled."); return exitCancelled;
    }
    return exitFailure;
}

int ProcessCommand::reportTheEnd(const PipelineOutcome& outcome)
{
    const auto& reason = outcome.context.endReason;
    if (!m_options.json)
        m_terminal.line(reason.empty() ? "The run was ended." : cleanText(reason, ' '));
    return outcome.context.hasEndedInFailure ? exitFailure : exitSuccess;
}

int ProcessCommand::printJson(const PipelineOutcome& outcome)
{
    m_explained.end = outcome.end;
    m_explained.failed = outcome.end == End::failed || outcome.context.hasEndedInFailure;
    if (outcome.failure)
        m_explained.reason = outcome.failure->message;
    else if (!outcome.context.endReason.empty())
        m_explained.reason = outcome.context.endReason;
    const int error = writeToStandardOutput(dumpJson(toJson(m_explained)) + '\n');
    if (error == 0)
        return exitSuccess;
    return complain("Standard output cannot be written: " + std::generic_category().message(error) + ".");
}

void ProcessCommand::noteTheHistory(const PipelineOutcome& outcome)
{
    if (!m_options.history)
        return;
    if (outcome.context.historyEntry)
        m_terminal.line("It is in the history. See it with: " +
                        historyCommand("show", outcome.context.historyEntry->id));
    else if (!m_services.history || !m_services.history->isEnabled())
        m_terminal.line("The history is switched off, so it is not there: see historyStoragePolicy in the settings.");
    else
        m_terminal.line("The history could not be written, so it is not there.");
}

int ProcessCommand::complain(const std::string& text)
{
    m_terminal.line(m_terminal.coloured(Terminal::Colour::red, "Error: ") + text);
    return exitFailure;
}

} // namespace vocalith
