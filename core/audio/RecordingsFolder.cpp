#include "core/audio/RecordingsFolder.h"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

namespace vocalith {

bool makeRecordingsFolder(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder.parent_path(), error);
    if (::mkdir(folder.c_str(), S_IRWXU) == 0)
        return true;
    return errno == EEXIST && std::filesystem::is_directory(folder, error);
}

} // namespace vocalith
