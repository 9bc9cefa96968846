#include "base/Url.h"

#include <gtest/gtest.h>

using namespace vocalith;

namespace {

TEST(Url, EveryPathSurvivesItsFileUrl)
{
    for (const std::filesystem::path path : {"/", "/home/ada/Voice notes/100%.wav", "/tmp/a?b#c&d=e+f;g",
                                             "/tmp/Grüße 👋.mp3", "/tmp/not\xFFutf8", "/a//b"}) {
        const auto url = fileUrl(path);
        EXPECT_EQ(filePath(url), path) << url;
        EXPECT_EQ(url.find_first_of(" ?#\xFF"), std::string::npos) << url;
    }
    EXPECT_EQ(fileUrl("relative.wav"), fileUrl(std::filesystem::current_path() / "relative.wav"));
}

TEST(Url, ReadsOnlyFilesOfThisMachine)
{
    EXPECT_EQ(filePath("FILE://localhost/tmp/a%20b"), "/tmp/a b");
    EXPECT_EQ(filePath("file:/tmp/a?query#fragment"), "/tmp/a");
    for (const auto* url : {"", "/tmp/a", "http://host/tmp/a", "file://server/share/a", "file:relative", "file:///a%2",
                            "file:///a%zz", "file:///a%+1", "file:///a%00b"})
        EXPECT_FALSE(filePath(url)) << url;
}

} // namespace
