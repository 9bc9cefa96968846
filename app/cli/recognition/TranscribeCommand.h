#pragma once

#include "app/cli/Options.h"
#include "app/cli/terminal/TerminalInput.h"
#include "base/Clock.h"
#include "base/TaskScope.h"
#include "base/Worker.h"
#include "models/TranscriptionData.h"

#include <string>

namespace vocalith {

class HistoryService;
class PCMConverter;
class PersistentAppStorage;
class Terminal;
class TranscriptionSessionManager;

/// `vocalith transcribe`: writes down audio and video files, one after the other. A file that fails does not keep the
/// others from their turn.
class TranscribeCommand {
public:
    struct Services {
        TranscriptionSessionManager& sessionManager;
        Terminal& terminal;
        InterruptSignals& interrupts;
        PersistentAppStorage& appStorage;
        HistoryService& history;
        const PCMConverter& converter;
        const Clock& clock;
        std::filesystem::path rescueFolder; ///< for a transcript that its destination does not take
    };

    TranscribeCommand(TranscribeOptions options, TranscriptionModelID model, Services services);

    /// Yields the exit code. Ctrl-C ends it with what was finished until then.
    Task<int> run();

private:
    Result<std::filesystem::path, std::string> destination(const std::filesystem::path& file) const;
    ExportFormat format() const;
    Result<void, std::string> checkOptions() const;
    Task<void> transcribeAll();
    Task<int> transcribe(std::filesystem::path file);
    Task<void> keep(TranscriptionData transcript, std::filesystem::path file);
    int deliver(const TranscriptionData& transcript, const std::filesystem::path& file);
    int rescue(const std::string& reason, const std::string& text);
    int complain(const std::string& text);
    std::function<void(double)> progressOf(const std::filesystem::path& file);

    const TranscribeOptions m_options;
    const TranscriptionModelID m_model;
    Services m_services;
    Worker m_examination;
    TaskScope m_work;
    int m_exitCode = 0;
};

} // namespace vocalith
