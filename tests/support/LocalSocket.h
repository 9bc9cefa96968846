#pragma once

#include <filesystem>

namespace vocalith::test {

/// Whether somebody answers at that socket. Its file is there a moment before anybody listens.
bool isListening(const std::filesystem::path& socket);

} // namespace vocalith::test
