#pragma once

#include "app/cli/RecognitionOptions.h"
#include "app/cli/completion/CompletionOptions.h"
#include "app/cli/history/HistoryOptions.h"
#include "app/cli/settings/SettingsOptions.h"
#include "models/RecordingMode.h"
#include "models/TranscriptExport.h"
#include "models/TranscriptionModelID.h"

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

using Command = std::variant<DictateOptions, TranscribeOptions, ModelsOptions, DoctorOptions, HistoryOptions,
                             SettingsOptions, CompletionOptions>;

} // namespace vocalith
