#include "base/AtomicFile.h"

#include "base/FileDescriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdlib>

namespace vocalith {
namespace {

namespace fs = std::filesystem;

Failure<FileError> systemFailure(const fs::path& path)
{
    return failure(FileError{path, std::error_code(errno, std::generic_category())});
}

bool writeAll(int file, std::string_view content)
{
    while (!content.empty()) {
        const auto written = ::write(file, content.data(), content.size());
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0)
            content.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool flushFolder(const fs::path& folder)
{
    const FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Some file systems cannot flush a folder and need not.
    return descriptor.isOpen() && (::fsync(descriptor.get()) == 0 || errno == EINVAL || errno == ENOTSUP);
}

fs::path targetOf(const fs::path& path)
{
    std::error_code error;
    auto target = fs::is_symlink(path, error) ? fs::canonical(path, error) : path;
    return error || target.empty() ? path : target;
}

fs::path folderOf(const fs::path& path)
{
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

constexpr std::string_view kMark = "tmp-";     // tells it from an editor's ".file.swp" and somebody's ".file.backup"
constexpr std::string_view kUnique = "XXXXXX"; // letters and digits in the end

Result<void, FileError> replace(const fs::path& path, const fs::path& folder, std::string_view content, Flush flush)
{
    std::string aside = (folder / ("." + path.filename().string() + ".")).string().append(kMark).append(kUnique);
    FileDescriptor descriptor(::mkostemp(aside.data(), O_CLOEXEC)); // made with mode 0600
    if (!descriptor.isOpen())
        return systemFailure(path);
    if (writeAll(descriptor.get(), content) && (flush == Flush::later || ::fsync(descriptor.get()) == 0) &&
        descriptor.close() && ::rename(aside.c_str(), path.c_str()) == 0)
        return {};
    auto failed = systemFailure(path);
    ::unlink(aside.c_str());
    return failed;
}

/// `path` names it in errors.
Result<std::string, FileError> readToTheEnd(int file, const fs::path& path)
{
    std::string content;
    std::array<char, 65536> piece;
    for (;;) {
        const auto count = ::read(file, piece.data(), piece.size());
        if (count == 0)
            return content;
        if (count > 0) {
            content.append(piece.data(), static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) { // whoever started this program has it so
            pollfd readable{file, POLLIN, 0};
            ::poll(&readable, 1, -1);
        } else if (errno != EINTR) {
            return systemFailure(path);
        }
    }
}

} // namespace

std::string toString(const FileError& error)
{
    return error.path.string() + ": " + error.reason.message();
}

Result<void, FileError> createPrivateFolder(const fs::path& folder)
{
    fs::path made;
    for (const auto& part : folder) {
        made /= part;
        if (made.empty() || ::mkdir(made.c_str(), S_IRWXU) == 0)
            continue;
        const auto reason = errno;
        std::error_code ignored;
        // Where a folder stands already the answer may also be that nothing could be made there.
        if (!fs::is_directory(made, ignored)) {
            errno = reason;
            return systemFailure(made);
        }
    }
    return {};
}

Result<void, FileError> writeFileAtomically(const fs::path& path, std::string_view content, Flush flush)
{
    const auto target = targetOf(path);
    const auto folder = folderOf(target);
    if (auto created = createPrivateFolder(folder); !created)
        return created;
    if (auto replaced = replace(target, folder, content, flush); !replaced)
        return replaced;
    if (flush == Flush::now && !flushFolder(folder))
        return systemFailure(folder);
    return {};
}

std::optional<std::string> unfinishedWriteOf(std::string_view name)
{
    const auto dot = name.rfind('.');
    const auto end = dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
    if (dot < 2 || !name.starts_with('.') || !end.starts_with(kMark) || end.size() != kMark.size() + kUnique.size())
        return std::nullopt;
    const bool isUnique =
        std::all_of(end.begin() + kMark.size(), end.end(), [](unsigned char c) { return std::isalnum(c) != 0; });
    return isUnique ? std::optional(std::string(name.substr(1, dot - 1))) : std::nullopt;
}

void removeLeftovers(const fs::path& path)
{
    const auto target = targetOf(path);
    std::error_code error;
    for (const auto& file : fs::directory_iterator(folderOf(target), error)) {
        if (unfinishedWriteOf(file.path().filename().string()) == target.filename().string())
            fs::remove(file.path(), error);
    }
}

Result<std::string, FileError> readWholeFile(const fs::path& path)
{
    const FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!descriptor.isOpen())
        return systemFailure(path);
    return readToTheEnd(descriptor.get(), path);
}

Result<std::string, FileError> readStandardInput()
{
    return readToTheEnd(STDIN_FILENO, "standard input");
}

} // namespace vocalith
