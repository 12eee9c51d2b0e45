#include "tools/check/tame_findings.h"

#include <sstream>

#include <gtest/gtest.h>

namespace ocpan {
namespace {

TEST(TameFindings, ShowBytesThatCanNotBePrinted) {
  EXPECT_EQ(printable("a\x1B[2J\xFF \xC2\x9B \xC3\xBC"), "a\\x1B[2J\\xFF \\xC2\\x9B \xC3\xBC");
}

TEST(TameFindings, TellATextFromOtherFiles) {
  std::istringstream text("caf\xC3\xA9\t'x'\r\n");
  EXPECT_TRUE(looks_like_text(text));
  std::istringstream other("\x89PNG\r\n\x1A\n");
  EXPECT_FALSE(looks_like_text(other));
}

TEST(TameFindings, StandInTheOrderOfTheLines) {
  const std::vector<finding> tame = tame_findings({{verdict::unusable, "rig.txt", "d", ""},
                                                   {verdict::unusable, "rig.txt:11:2", "c", ""},
                                                   {verdict::unusable, "rig.txt:9:10", "b", ""},
                                                   {verdict::unusable, "rig.txt:9:2", "a", ""}},
                                                  "rig.txt");
  std::string order;
  for (const finding& each : tame) order += each.what;
  EXPECT_EQ(order, "abcd");
}

TEST(TameFindings, AreCappedWithACount) {
  std::vector<finding> many(30, {verdict::doubtful, "rig.txt:1:1", "x", ""});
  many.push_back({verdict::unusable, "rig.txt:40:1", "the worst", ""});
  const std::vector<finding> tame = tame_findings(many, "rig.txt");
  ASSERT_EQ(tame.size(), 21u);
  EXPECT_EQ(tame.front().what, "the worst");
  EXPECT_EQ(tame.back().what, "and 11 more");
}

}  // namespace
}  // namespace ocpan
