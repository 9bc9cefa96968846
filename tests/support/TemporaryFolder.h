#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace vocalith::test {

/// A folder of the test's own, removed with all that is in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path operator/(const std::filesystem::path& name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

void writeFile(const std::filesystem::path& file, std::string_view content);
std::string readFile(const std::filesystem::path& file);

} // namespace vocalith::test
