#pragma once

#include <filesystem>
#include <string>

namespace vocalith {

struct RecordingRequest;

/// Makes the folder that recordings are kept in, for its owner only, if it is not there. Yields whether it is.
bool makeRecordingsFolder(const std::filesystem::path& folder);
/// The name of the recording's file, which begins with its purpose.
std::string fileName(const RecordingRequest& request);

} // namespace vocalith
