/// How the stand-in for libtpx shortens paths.
#include <gtest/gtest.h>

#include <tpx.h>

namespace {

TEST(TpxStandin, KeepsTheLastTwoComponents)
{
    EXPECT_STREQ(tpx_short_fname("command/src/cmdSyntax.cpp"), "src/cmdSyntax.cpp");
    EXPECT_STREQ(tpx_short_fname("/a/b/c/d.cpp"), "c/d.cpp");
}

TEST(TpxStandin, ReturnsAPathOfFewerComponentsWhole)
{
    EXPECT_STREQ(tpx_short_fname("src/a.cpp"), "src/a.cpp");
    EXPECT_STREQ(tpx_short_fname("a.cpp"), "a.cpp");
    EXPECT_STREQ(tpx_short_fname("/a.cpp"), "/a.cpp");
    EXPECT_STREQ(tpx_short_fname(""), "");
}

TEST(TpxStandin, ReturnsPartOfThePathItself)
{
    const char path[] = "a/b/c.cpp";
    EXPECT_EQ(tpx_short_fname(path), path + 2);
}

TEST(TpxStandin, NamesANullPath)
{
    EXPECT_STREQ(tpx_short_fname(nullptr), "(null)");
}

} // namespace
