#pragma once

#include "base/Result.h"
#include "platform/media/FileDescriptor_p.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace vocalith::media {

/// A file that is being made, readable by its owner only. It is written aside, takes its place (and that of an older
/// file there) in `finish`, and is removed when it is dropped before.
class OutputFile {
public:
    /// An error is the system's reason.
    static Result<OutputFile, std::string> create(const std::filesystem::path& file);
    OutputFile(OutputFile&&) = default;
    OutputFile& operator=(OutputFile&&) = delete;
    ~OutputFile();

    /// Writes at the current position. Yields whether that worked; after a failure nothing works any more.
    bool write(std::span<const std::uint8_t> bytes);
    /// The new position, or -1.
    std::int64_t seek(std::int64_t offset, int whence);
    Result<void, std::string> finish();

    bool failed() const { return m_error != 0; }
    /// errno of the first failure.
    int error() const { return m_error; }

private:
    OutputFile(std::filesystem::path file, std::filesystem::path aside, FileDescriptor descriptor)
        : m_file(std::move(file)), m_aside(std::move(aside)), m_descriptor(std::move(descriptor))
    {}

    std::filesystem::path m_file;
    std::filesystem::path m_aside;
    FileDescriptor m_descriptor; ///< open until the file is finished
    int m_error = 0;
};

} // namespace vocalith::media
