#pragma once

#include "base/Result.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace vocalith {

/// A file operation that failed: what it was about and why.
struct FileError {
    std::filesystem::path path;
    std::error_code reason;
    bool operator==(const FileError&) const = default;
};

/// For the log: "/path/to/file: No space left on device".
std::string toString(const FileError& error);

/// Makes the folder and those above it that are missing, each for its owner only (0700). Existing ones stay as they
/// are.
Result<void, FileError> createPrivateFolder(const std::filesystem::path& folder);

/// Replaces the file, or makes it, so that whoever reads it at any moment, also after a power cut, finds the old
/// content or the new one and nothing between. The file is readable by its owner only (0600); missing folders are made.
/// A symbolic link stays one: the file that it names is replaced. Blocks until the content is on the disk; with
/// `Flush::later`, for what can be made again, the system brings it there when it likes. Any thread.
enum class Flush { now, later };
Result<void, FileError> writeFileAtomically(const std::filesystem::path& path, std::string_view content,
                                            Flush flush = Flush::now);

/// The name of the file of which this is a write that has not come to its end, if it is one.
std::optional<std::string> unfinishedWriteOf(std::string_view name);

/// Removes what writes of that file left beside it when they were killed. Only while nobody else writes it; any thread.
void removeLeftovers(const std::filesystem::path& path);

/// The whole content of a file. Any thread.
Result<std::string, FileError> readWholeFile(const std::filesystem::path& path);

/// What comes on standard input, to its end. Blocks until then; any thread.
Result<std::string, FileError> readStandardInput();

} // namespace vocalith
