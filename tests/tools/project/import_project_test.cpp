#include "tools/project/import_project.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "include/oc_pan_cal.h"
#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::run_here;
using testing::temp_folder;
using testing::write_file;

const std::string panorama = "p f2 w2000 h1000 v360\n";
const std::string level = "i w800 h600 f2 v120 y0 p0 r0";

imported_project imported(const std::string& text) {
  std::istringstream in(text);
  return import_project(in);
}

// The finding that has this text in it; the test fails if there is none.
project_finding finding_with(const imported_project& project, const std::string& part) {
  for (const project_finding& finding : project.findings) {
    if (finding.text.find(part) != std::string::npos) return finding;
  }
  ADD_FAILURE() << "nothing tells of " << part;
  return {};
}

void expect_refused(const std::string& text, std::size_t line, int code, const std::string& part) {
  const imported_project project = imported(text);
  const project_finding finding = finding_with(project, part);
  EXPECT_EQ(finding.line, line) << text;
  EXPECT_EQ(finding.code, code) << text;
  EXPECT_TRUE(project.text.empty()) << text;
}

void expect_warned(const std::string& text, std::size_t line, const std::string& part) {
  const imported_project project = imported(text);
  const project_finding finding = finding_with(project, part);
  EXPECT_EQ(finding.line, line) << text;
  EXPECT_EQ(finding.code, 0) << text;
  EXPECT_FALSE(project.text.empty()) << text;
}

bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(ImportProject, KeepsAllElse) {
  const std::string rest = "# made by hand\n\nm g1 i0 f0\nv y0  p0\nc n0 N1 x1 y2 X3 Y4 t0\n";
  const std::string line = level + R"( a0.01 b-0.020 d+3 Vm5 u10 n"a.jpg")" + "\n";
  const imported_project project = imported(panorama + line + rest);
  EXPECT_TRUE(has(project.text, panorama + line + rest)) << project.text;
  EXPECT_TRUE(project.findings.empty());
}

TEST(ImportProject, ChangesNothingThatItDoesNotHaveTo) {
  const imported_project project = imported(level + " g0 t0 C10,790,20,580\n");
  EXPECT_TRUE(has(project.text, level + " g0 t0 C10,790,20,580\n")) << project.text;
}

TEST(ImportProject, FollowsLinksToWhicheverPicture) {
  const imported_project project = imported(
      "i w800 h600 f0 v=1 y0 p0 r0 a=2 C=2\ni w800 h600 f0 v87.5 y0 p0 r0\n"
      "i w800 h600 f0 v=0 y0 p0 r0 a0.0125 C1,700,2,500\n");
  EXPECT_TRUE(has(project.text,
                  "i w800 h600 f0 v87.5 y0 p0 r0 a0.0125 C1,700,2,500\n"
                  "i w800 h600 f0 v87.5 y0 p0 r0\n"
                  "i w800 h600 f0 v87.5 y0 p0 r0 a0.0125 C1,700,2,500\n"))
      << project.text;
}

TEST(ImportProject, LinkToAPictureWithoutTheKeyIsZero) {
  const imported_project project = imported(level + " a0.01\n" + level + " a=2\n" + level + "\n");
  EXPECT_TRUE(has(project.text, level + " a0\n")) << project.text;
}

TEST(ImportProject, LensKindAndAnglesLeftOutAreZeroAndNotThoseOfTheLineBefore) {
  const imported_project project = imported("i w800 h600 f2 v120 y10 p0 r0\ni w800 h600 v100\n");
  EXPECT_TRUE(has(project.text, "\ni w800 h600 v100 f0 y0 p0 r0\n")) << project.text;
}

TEST(ImportProject, RefusesWhatTheDialectCannotHold) {
  const std::string base = panorama + level;
  expect_refused(base + " TrX0 TrY0.5\n", 2, OCPAN_INVALID, "TrY0.5 moves the camera");
  expect_refused(base + " Z-1\n", 2, OCPAN_INVALID, "Z-1 moves the camera");
  expect_refused(base + " TrZ=1\n" + level + " TrZ1\n", 2, OCPAN_INVALID, "TrZ1 moves");
  expect_refused(panorama + "i w800 h600 f4 v120\n", 2, OCPAN_INVALID, "f4 is a lens kind");
  expect_refused("i w800 h600 f0 v180\n", 1, OCPAN_INVALID, "v180 is no field of view");
  expect_refused("i w800 h600 f2\n", 1, OCPAN_INVALID, "v0 is no field of view");
  expect_refused("i f2 v100\n", 1, OCPAN_INVALID, "the picture has no size");
  expect_refused("p f2 h1000\n" + level + "\n", 1, OCPAN_INVALID, "the panorama has no scale");
}

TEST(ImportProject, RefusesWhatIsMalformed) {
  expect_refused(level + " C1,700,2\n", 1, OCPAN_MALFORMED, "crop 1,700,2 isn't one");
  expect_refused(level + " C700,1,2,500\n", 1, OCPAN_MALFORMED, "crop 700,1,2,500 isn't one");
  expect_refused(panorama + level + " S10,600\n", 2, OCPAN_MALFORMED, "S10,600 is no crop");
  expect_refused(level + " S700,1,2,500\n", 1, OCPAN_MALFORMED, "S700,1,2,500 is no crop");
  expect_refused(level + " S0,700,2,x\n", 1, OCPAN_MALFORMED, "S0,700,2,x is no crop");
  expect_refused(level + " S=1\n", 1, OCPAN_MALFORMED, "S=1 leads to no picture");
  expect_refused(level + " a0.1x\n", 1, OCPAN_MALFORMED, "a0.1x holds no number");
  expect_refused(level + " dnan\n", 1, OCPAN_MALFORMED, "dnan holds no number");
  expect_refused(level + " a=1\n", 1, OCPAN_MALFORMED, "a=1 leads to no picture");
  expect_refused(level + " a=0\n", 1, OCPAN_MALFORMED, "a=0 leads to no picture");
  expect_refused(level + " a=1\n" + level + " a=0\n", 2, OCPAN_MALFORMED, "a=0 leads");
  expect_refused(panorama, 0, OCPAN_MALFORMED, "no line that begins with i");
  expect_refused(panorama + "o f0 y0 r0 p0 v90\n", 0, OCPAN_MALFORMED, "o lines");
}

TEST(ImportProject, RefusesItsOwnFiles) {
  const std::string once = imported(level + "\n").text;
  expect_refused(once, 0, OCPAN_MALFORMED, "already");
}

TEST(ImportProject, WarnsOfWhatIsLeftAside) {
  expect_warned(panorama + level + " S0,700,2,500\n", 2, "S0,700,2,500 selects a part");
  std::string nine;
  for (int i = 0; i < 9; ++i) nine += level + "\n";
  expect_warned(nine, 0, "9 pictures");
  expect_warned(level + "\n", 0, "no line that begins with p");
}

// The library's reader parts words at blanks, whatever stands between quotation marks.
TEST(ImportProject, ClosesBlanksOfNamesThatWouldBeReadAsParameters) {
  expect_warned(level + " n\"my pretty.jpg\"\n", 1, "n\"my_pretty.jpg\"");
  const imported_project harmless = imported(panorama + level + " n\"my Nice.jpg\"\n");
  EXPECT_TRUE(has(harmless.text, "n\"my Nice.jpg\"")) << harmless.text;
  EXPECT_TRUE(harmless.findings.empty());
}

TEST(ImportProject, CommandWritesTheFile) {
  const temp_folder folder;
  write_file(folder.file("in.pto"), panorama + level + "\n");
  const auto run = run_here("import-project " + folder.file("in.pto") + " " + folder.file("o.pts"));
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_TRUE(has(run.out, "cameras: 1")) << run.out;
  EXPECT_TRUE(has(read_file(folder.file("o.pts")), panorama + level + "\n"));
}

TEST(ImportProject, CommandTellsFileLineAndReasonAndWritesNothing) {
  const temp_folder folder;
  const std::string in = folder.file("in.pto"), out = folder.file("o.pts");
  write_file(in, panorama + level + " TrX1\n");
  const auto run = run_here("import-project " + in + " " + out);
  EXPECT_EQ(run.code, OCPAN_INVALID);
  EXPECT_TRUE(has(run.err, "oc_pan: " + in + ":2: TrX1 moves")) << run.err;
  EXPECT_FALSE(std::filesystem::exists(out));
}

TEST(ImportProject, CommandTellsOfFilesItCannotUse) {
  const temp_folder folder;
  const std::string in = folder.file("in.pto");
  EXPECT_EQ(run_here("import-project " + in + " " + folder.file("o.pts")).code, OCPAN_INPUT);
  write_file(in, level + "\n");
  EXPECT_EQ(run_here("import-project " + in + " " + in).code, 64);
  EXPECT_EQ(read_file(in), level + "\n");
  EXPECT_EQ(run_here("import-project " + in + " " + folder.file("no/o.pts")).code, OCPAN_OUTPUT);
}

}  // namespace
}  // namespace ocpan
