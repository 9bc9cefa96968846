#pragma once

#include "app/cli/commands/CommandsOptions.h"
#include "app/cli/completion/CompletionOptions.h"
#include "app/cli/history/HistoryOptions.h"
#include "app/cli/process/ProcessOptions.h"
#include "app/cli/recognition/RecognitionOptions.h"
#include "app/cli/replacements/ReplacementsOptions.h"
#include "app/cli/scripts/ScriptsOptions.h"
#include "app/cli/settings/SettingsOptions.h"
#include "app/cli/shortcuts/ShortcutsOptions.h"
#include "models/RecordingMode.h"
#include "models/TranscriptExport.h"
#include "models/TranscriptionModelID.h"
#include "ports/RunningInstance.h"

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vocalith {

struct DictateOptions {
    RecognitionOptions recognition;
    std::optional<std::filesystem::path> audio; ///< speech from a file in place of the microphone
    RecordingMode source = RecordingMode::microphone;
    std::string microphone; ///< empty follows the default
    bool json = false;
};

struct TranscribeOptions {
    RecognitionOptions recognition;
    std::vector<std::filesystem::path> files;
    std::optional<ExportFormat> format;
    std::filesystem::path output; ///< a file, a folder, or empty for standard output
    bool force = false;           ///< replace files that exist
    bool quiet = false;
};

struct ModelsOptions {
    bool installedOnly = false;
    bool json = false;
};

struct DoctorOptions {
    bool json = false;
};

/// `vocalith run`: the program itself, until it is told to quit.
struct RunOptions {};

/// `vocalith start|stop|toggle|cancel|open`: something for the running program.
struct RemoteOptions {
    InstanceRequest request;
};

using Command = std::variant<DictateOptions, TranscribeOptions, ModelsOptions, DoctorOptions, HistoryOptions,
                             SettingsOptions, ShortcutsOptions, CompletionOptions, RunOptions, RemoteOptions,
                             ProcessOptions, ScriptsOptions, CommandsOptions, ReplacementsOptions>;

} // namespace vocalith
