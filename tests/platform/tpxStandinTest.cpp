/// How the stand-in for libtpx shortens paths.
#include <gtest/gtest.h>

#include <tpx.h>

TEST(TpxStandin, ReturnsTheLastTwoComponentsOfAPathAsPartOfIt)
{
    const char path[] = "command/src/cmdSyntax.cpp";
    EXPECT_EQ(tpx_short_fname(path), path + 8);
    EXPECT_STREQ(tpx_short_fname("/a/b/c/d.cpp"), "c/d.cpp");
    for (const char* shortPath : {"src/a.cpp", "a.cpp", "/a.cpp", ""}) {
        EXPECT_EQ(tpx_short_fname(shortPath), shortPath);
    }
    EXPECT_STREQ(tpx_short_fname(nullptr), "(null)");
}
