#include "tests/support/TemporaryFolder.h"

#include "base/Uuid.h"

#include <fstream>
#include <iterator>

namespace vocalith::test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() : m_path(fs::temp_directory_path() / ("vocalith-test-" + Uuid::random().toString()))
{
    fs::create_directories(m_path);
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

void writeFile(const fs::path& file, std::string_view content)
{
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
}

std::string readFile(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace vocalith::test
