#include "models/SharedAudioStorage.h"

#include "models/KeyboardCompanion.h"

namespace vocalith {

std::string userMessage(SharedAudioStorageError error)
{
    switch (error) {
    case SharedAudioStorageError::containerUnavailable: return "Shared container unavailable";
    case SharedAudioStorageError::fileMissing: return "Shared audio file missing";
    }
    return {};
}

Result<std::filesystem::path, SharedAudioStorageError> SharedAudioStorage::folder() const
{
    std::error_code error;
    if (!m_container || !std::filesystem::is_directory(*m_container, error))
        return failure(SharedAudioStorageError::containerUnavailable);
    auto folder = *m_container / KeyboardConstants::sharedAudioFolder;
    std::filesystem::create_directory(folder, error);
    if (!std::filesystem::is_directory(folder, error))
        return failure(SharedAudioStorageError::containerUnavailable);
    return folder;
}

Result<std::filesystem::path, SharedAudioStorageError> SharedAudioStorage::file(std::string_view name) const
{
    auto shared = folder();
    if (!shared)
        return shared;
    // The name comes from outside the program: it may not lead out of the folder.
    if (name.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos)
        return failure(SharedAudioStorageError::fileMissing);
    auto file = *shared / name;
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        return failure(SharedAudioStorageError::fileMissing);
    return file;
}

} // namespace vocalith
