#pragma once

#include "app/cli/ExitCode.h"
#include "app/cli/ModelReport.h"
#include "app/cli/RecognitionChoice.h"
#include "app/cli/StandardOutput.h"
#include "app/cli/TerminalOverlay.h"
#include "app/cli/completion/CompletionScript.h"
#include "app/cli/settings/SettingsCommand.h"
#include "app/whisper/WhisperCPPType.h"
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

    StandardOutput m_output{m_terminal, m_paths.recordingsFolder};
    TranscriptProcessingService m_pipeline{
        TranscriptProcessingService::defaultSteps(m_output, m_history, m_notices, m_log)};
    TranscriptionSessionManager m_session{
        [this](const auto& model, auto source) { return m_engines.service(model, source, {m_recognition.language}); },
        m_pipeline, m_storage, m_log.logger("session")};
};

} // namespace vocalith
