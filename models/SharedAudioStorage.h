#pragma once

#include "base/Result.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vocalith {

enum class SharedAudioStorageError { containerUnavailable, fileMissing };

/// The text that is shown to the user.
std::string userMessage(SharedAudioStorageError error);

/// Places recordings that are shared with the companion keyboard in the folder "SharedAudio" of the shared container.
/// A value; any thread.
class SharedAudioStorage {
public:
    /// `container` is the folder that both can reach, where there is one.
    explicit SharedAudioStorage(std::optional<std::filesystem::path> container) : m_container(std::move(container)) {}

    /// Where shared recordings lie. It is made when it is not there yet.
    Result<std::filesystem::path, SharedAudioStorageError> folder() const;

    /// Where the recording with that file name is.
    Result<std::filesystem::path, SharedAudioStorageError> file(std::string_view name) const;

private:
    std::optional<std::filesystem::path> m_container;
};

} // namespace vocalith
