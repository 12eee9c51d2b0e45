#include "platform/native_path.h"

#include <gtest/gtest.h>

namespace ocpan {
namespace {

#ifdef _WIN32
TEST(NativePath, StaysOnWindows) { EXPECT_EQ(native_path(".\\tmp/a\\b.png"), ".\\tmp/a\\b.png"); }
#else
TEST(NativePath, TurnsEachBackslash) {
  EXPECT_EQ(native_path(".\\tmp\\a\\b.png"), "./tmp/a/b.png");
}

TEST(NativePath, LeavesSlashesAlone) { EXPECT_EQ(native_path("/a/b c.png"), "/a/b c.png"); }

TEST(NativePath, LeavesNothingAlone) { EXPECT_EQ(native_path(""), ""); }
#endif

}  // namespace
}  // namespace ocpan
