#pragma once

#include "base/Data.h"
#include "base/Date.h"
#include "base/JsonFields.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vocalith {

/// A reference to a file. Make it with `fileBookmark`, resolve it with `filePath`.
struct FileBookmark {
    std::string url;   ///< the file's location when the bookmark was made, as a file URL
    Data bookmarkData; ///< opaque to this program, which writes the bytes of the path
    Date createdAt;

    bool operator==(const FileBookmark&) const = default;
};

FileBookmark fileBookmark(const std::filesystem::path& file, Date createdAt);

/// Where the file is, or nothing when the bookmark names no local file. Whether it is still there is not looked at.
std::optional<std::filesystem::path> filePath(const FileBookmark& bookmark);

constexpr auto jsonFields(JsonType<FileBookmark>)
{
    return fields(field("url", &FileBookmark::url), field("bookmarkData", &FileBookmark::bookmarkData),
                  field("createdAt", &FileBookmark::createdAt));
}

/// What older versions stored in place of a `FileBookmark`.
struct LegacyFileBookmark {
    std::string path;
    Data bookmarkData;
    Date createdAt;

    bool operator==(const LegacyFileBookmark&) const = default;
};

constexpr auto jsonFields(JsonType<LegacyFileBookmark>)
{
    return fields(field("path", &LegacyFileBookmark::path), field("bookmarkData", &LegacyFileBookmark::bookmarkData),
                  field("createdAt", &LegacyFileBookmark::createdAt));
}

Result<FileBookmark, JsonError> readLegacyFileBookmark(const Json& older);

constexpr JsonOlderForm<FileBookmark> jsonOlderForm(JsonType<FileBookmark>)
{
    return {"path", "url", &readLegacyFileBookmark};
}

} // namespace vocalith
