#include "models/FileBookmark.h"

#include "base/Json.h"
#include "base/Url.h"

namespace vocalith {

FileBookmark fileBookmark(const std::filesystem::path& file, Date createdAt)
{
    const auto& bytes = file.native();
    return {fileUrl(file), Data(bytes.begin(), bytes.end()), createdAt};
}

std::optional<std::filesystem::path> filePath(const FileBookmark& bookmark)
{
    return filePath(bookmark.url);
}

Result<FileBookmark, JsonError> readLegacyFileBookmark(const Json& older)
{
    return fromJson<LegacyFileBookmark>(older).map([](LegacyFileBookmark&& legacy) {
        return FileBookmark{fileUrl(legacy.path), std::move(legacy.bookmarkData), legacy.createdAt};
    });
}

} // namespace vocalith
