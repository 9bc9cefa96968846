#include "app/cli/CommandLine.h"

#include "app/cli/ExitCode.h"
#include "app/cli/completion/CompletionCommandLine.h"
#include "app/cli/history/HistoryCommandLine.h"
#include "app/cli/settings/SettingsCommandLine.h"
#include "models/WhisperLanguage.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <map>

namespace vocalith {
namespace {

constexpr const char* kFooter = R"(
Examples:
  vocalith dictate                        speak, press Enter, read the text
  vocalith dictate --audio memo.m4a       the same, with speech from a file
  vocalith transcribe talk.mp4 -o talk.srt
  vocalith models list
  vocalith history search invoice         what was dictated before
  vocalith settings list
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

} // namespace

Result<Command, int> parseCommandLine(int argc, const char* const* argv)
{
    Parsed parsed;
    CLI::App app("Vocalith: speech becomes text, on this machine.", "vocalith");
    app.set_version_flag("--version", "vocalith 0.1.0");
    app.require_subcommand(0, 1); // so that a misspelt command is named before one is asked for
    app.footer(kFooter);
    const auto* dictate = addDictate(app, parsed.dictate);
    const auto* transcribe = addTranscribe(app, parsed.transcribe, parsed.format);
    auto* models = app.add_subcommand("models", "The voice models");
    models->require_subcommand(0, 1);
    auto* list = models->add_subcommand("list", "List the voice models and which of them can be used now");
    list->add_flag("--installed", parsed.models.installedOnly, "Only those that can be used now");
    list->add_flag("--json", parsed.models.json, "Print the list as JSON");
    auto* doctor = app.add_subcommand("doctor", "Examine this machine and say what is missing");
    doctor->add_flag("--json", parsed.doctor.json, "Print the findings as JSON");
    const HistoryCommandLine history(app);
    const SettingsCommandLine settings(app);
    const CompletionCommandLine completion(app);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool isHelp = error.get_exit_code() == 0;
        app.exit(error, std::cout, std::cerr);
        return failure(static_cast<int>(isHelp ? exitSuccess : exitUsage));
    }
    if (!isKnownLanguage(parsed.dictate.recognition) || !isKnownLanguage(parsed.transcribe.recognition) ||
        !isKnownLanguage(history.recognition()))
        return failure(static_cast<int>(exitUsage));
    if (dictate->parsed())
        return Command(std::move(parsed.dictate));
    if (transcribe->parsed())
        return transcribeCommand(std::move(parsed.transcribe), parsed.format);
    if (list->parsed())
        return Command(parsed.models);
    if (doctor->parsed())
        return Command(parsed.doctor);
    if (history.isParsed()) {
        auto options = history.options();
        return options ? Result<Command, int>(*std::move(options)) : failure(complain(options.error()));
    }
    if (auto options = settings.options())
        return Command(std::move(*options));
    if (auto options = completion.options())
        return Command(std::move(*options));
    if (settings.parsed())
        return failure(complain("Say what to do with the settings: vocalith settings --help lists what can be done."));
    return failure(complain(models->parsed() ? "Say what to do with the models: vocalith models list"
                                             : "Say what to do: vocalith --help lists the commands."));
}

} // namespace vocalith
