#include "app/cli/CommandLine.h"

#include "app/cli/ExitCode.h"
#include "app/cli/commands/CommandsCommandLine.h"
#include "app/cli/completion/CompletionCommandLine.h"
#include "app/cli/history/HistoryCommandLine.h"
#include "app/cli/process/ProcessCommandLine.h"
#include "app/cli/remote/RemoteCommandLine.h"
#include "app/cli/replacements/ReplacementsCommandLine.h"
#include "app/cli/scripts/ScriptsCommandLine.h"
#include "app/cli/settings/SettingsCommandLine.h"
#include "app/cli/shortcuts/ShortcutsCommandLine.h"
#include "models/WhisperLanguage.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <map>

namespace vocalith {
namespace {

constexpr const char* kFooter = R"(
Examples:
  vocalith run                            the program with its shortcuts; stays in the tray
  vocalith toggle                         start or end a dictation, from any key binding
  vocalith dictate                        speak, press Enter, read the text
  vocalith dictate --audio memo.m4a       the same, with speech from a file
  vocalith transcribe talk.mp4 -o talk.srt
  vocalith models list
  vocalith history search invoice         what was dictated before
  vocalith settings list
  vocalith process --explain < text.txt   try your rules without speaking
  vocalith doctor                         what works here, and what is missing

Text goes to standard output, everything else to standard error.
Exit codes: 0 done, 1 failed, 2 wrong usage, 3 no speech, 130 cancelled.)";

struct Parsed {
    DictateOptions dictate;
    TranscribeOptions transcribe;
    ModelsOptions models;
    DoctorOptions doctor;
    std::string format;
};

void addRecognition(CLI::App& command, RecognitionOptions& options)
{
    command.add_option("-m,--model", options.model, "Voice model (see: vocalith models list)")->type_name("ID");
    command.add_option("-l,--language", options.language, "Spoken language, e.g. en, de, french; auto to detect it")
        ->type_name("LANG");
}

CLI::App* addDictate(CLI::App& app, DictateOptions& options)
{
    static const std::map<std::string, RecordingMode> kSources = {{"microphone", RecordingMode::microphone},
                                                                  {"system", RecordingMode::systemAudio},
                                                                  {"both", RecordingMode::both}};
    auto* command = app.add_subcommand("dictate", "Record speech until Enter, then print its text");
    command->footer("\nEnter ends the recording, Escape or Ctrl-C throws it away.");
    addRecognition(*command, options.recognition);
    auto* audio = command->add_option("-a,--audio", options.audio, "Take the speech from this audio or video file")
                      ->type_name("FILE");
    command->add_option("-s,--source", options.source, "What to record: microphone, system (what plays) or both")
        ->transform(CLI::CheckedTransformer(kSources, CLI::ignore_case).description(""))
        ->type_name("SOURCE")
        ->excludes(audio);
    command->add_option("--microphone", options.microphone, "Microphone to record, as the audio server names it")
        ->type_name("NAME")
        ->excludes(audio);
    command->add_flag("--json", options.json, "Print the result as JSON");
    return command;
}

CLI::App* addTranscribe(CLI::App& app, TranscribeOptions& options, std::string& format)
{
    auto* command = app.add_subcommand("transcribe", "Write down the speech in audio and video files");
    command->footer("\nFormats: txt, srt, vtt, md, json, fcpxml (fcpxml:29.97 for another frame rate).\n"
                    "Without --format the name of the output decides, else plain text.");
    command->add_option("files", options.files, "Audio or video files")->required()->type_name("FILE");
    addRecognition(*command, options.recognition);
    command->add_option("-f,--format", format, "Form of the transcript")->type_name("FORMAT");
    command->add_option("-o,--output", options.output, "File, or folder for several, to write to")->type_name("PATH");
    command->add_flag("--force", options.force, "Replace output files that exist");
    command->add_flag("-q,--quiet", options.quiet, "Show no progress");
    return command;
}

int complain(const std::string& text)
{
    std::cerr << "vocalith: " << text << '\n';
    return exitUsage;
}

/// A language that no model knows is better refused before anybody speaks.
bool isKnownLanguage(const RecognitionOptions& options)
{
    if (!options.language || parseWhisperLanguage(*options.language))
        return true;
    complain("There is no language \"" + *options.language +
             "\". Use a code such as en, de or fr, its English name, or auto to detect it.");
    return false;
}

Result<Command, int> transcribeCommand(TranscribeOptions options, const std::string& format)
{
    if (!format.empty()) {
        options.format = exportFormat(format);
        if (!options.format)
            return failure(complain("There is no format \"" + format +
                                    "\". Use txt, srt, vtt, md, json or fcpxml, optionally with a frame rate as in "
                                    "fcpxml:29.97."));
    }
    return Command(std::move(options));
}

/// Every command with its options, and what was said of them.
class Commands {
public:
    Commands()
    {
        m_app.set_version_flag("--version", "vocalith 0.1.0");
        m_app.require_subcommand(0, 1); // so that a misspelt command is named before one is asked for
        m_app.footer(kFooter);
        m_models->require_subcommand(0, 1);
        m_list->add_flag("--installed", m_parsed.models.installedOnly, "Only those that can be used now");
        m_list->add_flag("--json", m_parsed.models.json, "Print the list as JSON");
        m_doctor->add_flag("--json", m_parsed.doctor.json, "Print the findings as JSON");
    }

    CLI::App& app() { return m_app; }

    Result<Command, int> chosen()
    {
        if (!isKnownLanguage(m_parsed.dictate.recognition) || !isKnownLanguage(m_parsed.transcribe.recognition) ||
            !isKnownLanguage(m_history.recognition()))
            return failure(static_cast<int>(exitUsage));
        if (m_dictate->parsed())
            return Command(std::move(m_parsed.dictate));
        if (m_transcribe->parsed())
            return transcribeCommand(std::move(m_parsed.transcribe), m_parsed.format);
        if (m_list->parsed())
            return Command(m_parsed.models);
        if (m_doctor->parsed())
            return Command(m_parsed.doctor);
        if (auto command = m_remote.options())
            return std::move(*command);
        if (m_history.isParsed()) {
            auto options = m_history.options();
            return options ? Result<Command, int>(*std::move(options)) : failure(complain(options.error()));
        }
        if (auto options = m_settings.options())
            return Command(std::move(*options));
        if (auto options = m_shortcuts.options())
            return Command(std::move(*options));
        if (auto options = m_commands.options())
            return Command(std::move(*options));
        if (auto options = m_replacements.options())
            return Command(std::move(*options));
        if (auto options = m_completion.options())
            return Command(std::move(*options));
        if (auto options = m_process.options())
            return Command(std::move(*options));
        if (auto options = m_scripts.options())
            return Command(std::move(*options));
        return failure(complain(whatIsMissing()));
    }

private:
    const char* whatIsMissing() const
    {
        if (m_settings.parsed())
            return "Say what to do with the settings: vocalith settings --help lists what can be done.";
        return m_models->parsed() ? "Say what to do with the models: vocalith models list"
                                  : "Say what to do: vocalith --help lists the commands.";
    }

    Parsed m_parsed;
    CLI::App m_app{"Vocalith: speech becomes text, on this machine.", "vocalith"};
    const CLI::App* m_dictate = addDictate(m_app, m_parsed.dictate);
    const CLI::App* m_transcribe = addTranscribe(m_app, m_parsed.transcribe, m_parsed.format);
    CLI::App* m_models = m_app.add_subcommand("models", "The voice models");
    CLI::App* m_list = m_models->add_subcommand("list", "List the voice models and which of them can be used now");
    CLI::App* m_doctor = m_app.add_subcommand("doctor", "Examine this machine and say what is missing");
    RemoteCommandLine m_remote{m_app};
    HistoryCommandLine m_history{m_app};
    SettingsCommandLine m_settings{m_app};
    ShortcutsCommandLine m_shortcuts{m_app};
    ProcessCommandLine m_process{m_app};
    ScriptsCommandLine m_scripts{m_app};
    ReplacementsCommandLine m_replacements{m_app};
    CommandsCommandLine m_commands{m_app};
    CompletionCommandLine m_completion{m_app};
};

} // namespace

Result<Command, int> parseCommandLine(int argc, const char* const* argv)
{
    Commands commands;
    try {
        commands.app().parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool isHelp = error.get_exit_code() == 0;
        commands.app().exit(error, std::cout, std::cerr);
        return failure(static_cast<int>(isHelp ? exitSuccess : exitUsage));
    }
    return commands.chosen();
}

} // namespace vocalith
