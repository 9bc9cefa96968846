#pragma once

#include "app/cli/ExitCode.h"
#include "app/cli/commands/CommandsCommand.h"
#include "app/cli/completion/CompletionScript.h"
#include "app/cli/models/ModelReport.h"
#include "app/cli/process/ProcessCommand.h"
#include "app/cli/recognition/RecognitionChoice.h"
#include "app/cli/replacements/ReplacementsCommand.h"
#include "app/cli/scripts/ScriptsCommand.h"
#include "app/cli/settings/SettingsCommand.h"
#include "app/cli/shortcuts/ShortcutsCommand.h"
#include "app/cli/terminal/StandardOutput.h"
#include "app/cli/terminal/TerminalOverlay.h"
#include "app/whisper/WhisperCPPType.h"
#include "core/pipeline/TranscriptRules.h"
#include "core/session/TranscriptionSessionManager.h"
#include "core/speech/PlatformRecognitionEngine.h"
#include "core/speech/TranscriptionServiceProvider.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/speech/whisper/ModelFileManager.h"
#include "core/speech/whisper/WhisperSettings.h"
#include "core/speech/whisper/WhisperTranscriptionService.h"
#include "core/storage/AppPaths.h"
#include "core/storage/LocalAnalytics.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "core/storage/settings/rules/LanguageTag.h"
#include "platform/freedesktop/launch/DesktopAppLauncher.h"
#include "platform/freedesktop/launch/ExecutableAutomations.h"
#include "platform/media/FFmpegPCMConverter.h"
#include "platform/pocketsphinx/PocketSphinxRecognizer.h"

namespace vocalith {

/// Every long-lived object of the program, from the bottom up; each lives until those above it are gone.
class Program {
public:
    explicit Program(Command command) : m_command(std::move(command)) {}

    Task<void> execute(int& exitCode);
    Task<int> run(const DictateOptions& options);
    Task<int> run(const TranscribeOptions& options);
    Task<int> run(const ModelsOptions& options) { co_return listModels(options, m_models.rows(), m_terminal); }
    Task<int> run(const DoctorOptions& options);
    Task<int> run(const HistoryOptions& options);
    Task<int> run(const SettingsOptions& options)
    {
        co_return SettingsCommand(m_storage, m_models, m_terminal).run(options);
    }
    Task<int> run(const ShortcutsOptions& options) { co_return ShortcutsCommand(m_storage, m_terminal).run(options); }
    Task<int> run(const ProcessOptions& options)
    {
        ProcessCommand command(options, {m_output, m_storage, m_notices, m_rules, &m_history}, m_clock, m_terminal,
                               m_log);
        co_return co_await command.run();
    }
    Task<int> run(const ReplacementsOptions& options)
    {
        ReplacementsCommand command(m_storage, m_rules.replacements, m_terminal);
        co_return co_await command.run(options);
    }
    Task<int> run(const ScriptsOptions& options) { co_return showScripts(options, m_terminal); }
    Task<int> run(const CommandsOptions& options)
    {
        CommandsCommand command(
            {m_rules.quickCommands, m_storage, m_automations, m_paths.automationsFolder, m_terminal});
        co_return command.run(options);
    }
    Task<int> run(const RunOptions& options);
    Task<int> run(const RemoteOptions& options);
    Task<int> run(const CompletionOptions& options)
    {
        co_return writeToStandardOutput(completionScript(options)) == 0 ? exitSuccess : exitFailure;
    }

private:
    const Command m_command;
    const RecognitionOptions m_recognition = recognitionOptions(m_command);
    const AppPaths m_paths = appPaths(environmentVariable);
    const std::filesystem::path m_dictationLock = m_paths.temporaryFolder / "dictation.lock";
    const LogService m_log = LogService::toFile(m_paths.logFile);
    SystemClock m_clock;
    Terminal m_terminal;
    TerminalNotices m_notices{m_terminal};
    PocketSphinxRecognizer m_recogniser;
    PersistentAppStorage m_storage{m_paths.settingsFile, m_clock, m_log.logger("settings"),
                                   environmentLocale(environmentVariable, m_recogniser.languages())};
    LocalAnalytics m_analytics{m_log.logger("analytics")};
    HistoryService m_history{{m_paths.historyFolder, m_paths.recordingsFolder, m_paths.indexFolder / "history.sqlite"},
                             m_storage,
                             m_clock,
                             m_log.logger("history")};

    FFmpegPCMConverter m_converter;
    const VoiceModelCatalogue m_catalogue;
    ModelFileManager m_modelFiles{modelsFolder(m_storage, m_paths.modelsFolder), m_catalogue};
    ModelReport m_models{m_catalogue, m_modelFiles, m_recogniser, m_storage, currentPlatformTraits()};
    WhisperCPPType m_whisperCPPType{m_log.logger("whisper.cpp")};
    WhisperTranscriptionService m_whisper{m_storage,        m_modelFiles, m_converter,
                                          m_whisperCPPType, m_clock,      m_log.logger("whisper")};
    PlatformRecognitionEngine m_platform{m_recogniser, m_converter, m_clock, m_log.logger("platform recogniser")};
    const TranscriptionServiceProvider m_engines{m_catalogue, m_modelFiles, currentPlatformTraits(), m_whisper,
                                                 m_platform};

    DesktopAppLauncher m_appLauncher{m_clock};
    ExecutableAutomations m_automations{m_paths.automationsFolder, m_clock};
    TranscriptRules m_rules{{m_storage, m_analytics, m_appLauncher, m_automations, m_notices, m_clock}, m_log};
    StandardOutput m_output{m_terminal, m_paths.recordingsFolder};
    TranscriptProcessingService m_pipeline{
        TranscriptProcessingService::defaultSteps({m_output, m_storage, m_notices, m_rules, &m_history}, m_log)};
    TranscriptionSessionManager m_session{
        [this](const auto& model, auto source) { return m_engines.service(model, source, {m_recognition.language}); },
        m_pipeline, m_storage, m_log.logger("session")};
};

} // namespace vocalith
