#include "app/cli/recognition/TranscribeCommand.h"

#include "app/cli/ExitCode.h"
#include "app/cli/models/BetterModelHint.h"
#include "app/cli/recognition/RecognitionChoice.h"
#include "app/cli/terminal/StandardOutput.h"
#include "app/cli/terminal/Terminal.h"
#include "base/AtomicFile.h"
#include "core/session/TranscriptionSessionManager.h"
#include "core/storage/history/HistoryService.h"
#include "ports/PCMConverter.h"

#include <fmt/format.h>

#include <set>
#include <system_error>

#include <unistd.h>

namespace vocalith {

namespace fs = std::filesystem;

TranscribeCommand::TranscribeCommand(TranscribeOptions options, TranscriptionModelID model, Services services)
    : m_options(std::move(options)), m_model(std::move(model)), m_services(services)
{}

Task<int> TranscribeCommand::run()
{
    const auto fine = checkOptions();
    if (!fine) {
        complain(fine.error());
        co_return static_cast<int>(exitUsage);
    }
    const auto engine = m_services.sessionManager.setEngine(m_model, TranscriptionSource::file);
    if (!engine)
        co_return complain(explained(engine.error()));
    const auto interrupted = m_services.interrupts.interrupted.subscribe([this] { m_work.requestStop(); });
    const auto terminated = m_services.interrupts.terminated.subscribe([this] { m_work.requestStop(); });
    m_work.start(transcribeAll());
    co_await m_work.untilEmpty();
    m_services.sessionManager.releaseEngine();
    co_return m_exitCode;
}

Task<void> TranscribeCommand::transcribeAll()
{
    const auto stop = co_await currentStopToken();
    for (const auto& file : m_options.files) {
        const int code = co_await transcribe(file);
        if (stop.stop_requested()) {
            m_services.terminal.line("Cancelled.");
            m_exitCode = exitCancelled;
            break;
        }
        if (code != exitSuccess && m_exitCode != exitFailure)
            m_exitCode = code;
    }
}

Result<void, std::string> TranscribeCommand::checkOptions() const
{
    std::error_code error;
    const auto& output = m_options.output;
    const bool several = m_options.files.size() > 1;
    if (several && !output.empty() && !fs::is_directory(output, error))
        return failure("With several files --output must be a folder that exists: make \"" + output.string() +
                       "\" first, or name another.");
    if (output.empty() && several && m_options.format && !std::holds_alternative<PlainTextFormat>(*m_options.format))
        return failure(
            std::string("Several transcripts in this format cannot share standard output. Name a folder with "
                        "--output."));
    std::set<fs::path> destinations;
    for (const auto& file : m_options.files) {
        const auto target = destination(file);
        if (!target)
            return failure(target.error());
        if (!target->empty() && !destinations.insert(*target).second)
            return failure("Two of the files would be written to \"" + target->string() + "\". Give them one by one.");
    }
    return {};
}

ExportFormat TranscribeCommand::format() const
{
    if (m_options.format)
        return *m_options.format;
    const auto byName = exportFormat(m_options.output.extension().string().substr(m_options.output.has_extension()));
    return byName.value_or(PlainTextFormat{});
}

Result<fs::path, std::string> TranscribeCommand::destination(const fs::path& file) const
{
    if (m_options.output.empty() || m_options.output == "-")
        return fs::path();
    std::error_code error;
    fs::path target = m_options.output;
    if (fs::is_directory(target, error))
        target /= file.stem().string() + "." + std::string(fileExtension(format()));
    const auto folder = fs::absolute(target).parent_path();
    if (!fs::is_directory(folder, error) || ::access(folder.c_str(), W_OK) != 0)
        return failure("Nothing can be written in the folder \"" + folder.string() +
                       "\". Make it first, or choose another --output.");
    if (fs::exists(target, error) && !m_options.force)
        return failure("\"" + target.string() + "\" exists. Choose another --output, or replace it with --force.");
    if (fs::equivalent(target, file, error))
        return failure("\"" + target.string() + "\" is the recording itself. Choose another --output.");
    return target;
}

Task<int> TranscribeCommand::transcribe(fs::path file)
{
    const auto started = m_services.clock.instant();
    const auto stop = co_await currentStopToken();
    const FileTranscriptionRequest request{file};
    const auto transcript = co_await m_services.sessionManager.transcribeFile(request, progressOf(file));
    m_services.terminal.clearStatus();
    if (stop.stop_requested())
        co_return static_cast<int>(exitCancelled);
    if (!transcript) {
        const auto& error = transcript.error();
        const bool noSpeech = error.kind == SessionError::Kind::noSpeech;
        const std::string text =
            noSpeech ? userMessage(error) + " in \"" + file.string() + "\"" : explained(error.cause);
        complain(text);
        co_return static_cast<int>(noSpeech ? exitNoSpeech : exitFailure);
    }
    co_await keep(*transcript, file);
    const int code = deliver(*transcript, file);
    hintAtBetterModels(transcript->modelId, m_services.appStorage, m_services.terminal);
    const double took = toSeconds(m_services.clock.instant() - started);
    const auto target = destination(file);
    if (code == exitSuccess && !m_options.quiet && target && !m_options.output.empty() && m_options.output != "-")
        m_services.terminal.line(fmt::format("{} ({:.1f} s)", file.string(), took));
    co_return code;
}

/// Puts the transcript into the history, before anything else can lose it. The file stays the user's own.
Task<void> TranscribeCommand::keep(TranscriptionData transcript, fs::path file)
{
    if (!m_services.history.isEnabled())
        co_return;
    auto examine = [&converter = m_services.converter, file](const StopToken&) { return converter.examine(file); };
    const auto examined = co_await m_examination.run(std::move(examine));
    if (!examined)
        co_return;
    const auto media = examined->value_or(MediaInfo{});
    const auto now = m_services.clock.now();
    std::error_code unknown;
    const auto size = fs::file_size(file, unknown);
    const AudioFile audio{fileBookmark(fs::absolute(file), now), media.duration,
                          unknown ? 0 : static_cast<std::int64_t>(size)};
    const auto type = media.hasVideo ? MediaFileType::video : MediaFileType::audio;
    HistoryEntry entry{Uuid::random(), now, {}};
    entry.content = FileTranscriptionProject{Uuid::random(), audio, type,
                                             FileTranscriptionProject::Completed{std::move(transcript)}};
    const auto kept = co_await m_services.history.upsert(std::move(entry));
    static_cast<void>(kept); // a failure has been logged, and the transcript is delivered all the same
}

int TranscribeCommand::deliver(const TranscriptionData& transcript, const fs::path& file)
{
    const auto target = destination(file);
    if (!target)
        return complain(target.error());
    std::string text = exportTranscript(transcript, format(), m_services.clock.now());
    if (!text.ends_with('\n'))
        text += '\n';
    if (target->empty()) {
        const int error = writeToStandardOutput(text);
        return error == 0 ? exitSuccess
                          : rescue("The transcript could not be written to standard output: " +
                                       std::generic_category().message(error) + ".",
                                   text);
    }
    const auto written = writeFileAtomically(*target, text);
    return written
               ? exitSuccess
               : rescue("\"" + target->string() + "\" could not be written: " + written.error().reason.message() + ".",
                        text);
}

int TranscribeCommand::rescue(const std::string& reason, const std::string& text)
{
    return complain(reason + " " + saveUndelivered(m_services.rescueFolder, text));
}

int TranscribeCommand::complain(const std::string& text)
{
    m_services.terminal.line(m_services.terminal.coloured(Terminal::Colour::red, "Error: ") + text);
    return exitFailure;
}

std::function<void(double)> TranscribeCommand::progressOf(const fs::path& file)
{
    if (m_options.quiet)
        return [](double) {};
    return [&terminal = m_services.terminal, name = file.filename().string()](double progress) {
        terminal.status(fmt::format("{}: {:.0f} %", name, progress * 100));
    };
}

} // namespace vocalith
