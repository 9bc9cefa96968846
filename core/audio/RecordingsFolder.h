#pragma once

#include <filesystem>

namespace vocalith {

/// Makes the folder that recordings are kept in, for its owner only, if it is not there. Yields whether it is.
bool makeRecordingsFolder(const std::filesystem::path& folder);

} // namespace vocalith
