#include <cctype>
#include <cmath>
#include <cstdlib>

#include <gtest/gtest.h>

#include "include/oc_pan_cal.h"
#include "tests/tools/pair_configuration.h"
#include "tests/tools/report/report_scene.h"
#include "tests/tools/tool_process.h"
#include "tools/report/camera_charts.h"
#include "tools/report/sections.h"

namespace ocpan {
namespace {

using testing::evaluated_rig;
using testing::make_evaluated_rig;
using testing::make_report;
using testing::run_here;
using testing::temp_folder;
using testing::tool_run;
using testing::write_file;

constexpr int frames = 6;
constexpr double noise = 0.1;  // pixels

std::size_t count_of(const std::string& text, const std::string& word) {
  std::size_t count = 0;
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
    ++count;
  }
  return count;
}

// The first thing in a page that no XML parser takes: a tag that isn't closed in turn, a
// quote without its other, an entity of no known name. Empty if all is well.
std::string malformed_part(const std::string& page) {
  std::vector<std::string> open;
  for (std::size_t at = page.find('>') + 1; at < page.size();) {  // behind the doctype
    if (page[at] == '&') {
      const std::string entity = page.substr(at, page.find(';', at) + 1 - at);
      const bool known = entity == "&amp;" || entity == "&lt;" || entity == "&gt;" ||
                         entity == "&quot;" || entity == "&#39;";
      if (!known) return entity.substr(0, 40);
    }
    if (page[at] != '<') {
      ++at;
      continue;
    }
    const std::size_t end = page.find('>', at);
    const std::string tag = page.substr(at + 1, end - at - 1);
    if (tag.find('<') != std::string::npos) return tag.substr(0, 80);
    if (count_of(tag, "\"") % 2 != 0) return tag.substr(0, 80);
    const std::string name = tag.substr(0, tag.find_first_of(" /", 1));
    if (tag[0] == '/') {
      if (open.empty() || "/" + open.back() != tag) return tag;
      open.pop_back();
    } else if (tag.back() != '/') {
      open.push_back(name);
    }
    at = end + 1;
  }
  return open.empty() ? "" : open.back();
}

class ReportPage : public ::testing::Test {
 protected:
  evaluated_rig rig = make_evaluated_rig("2-lens1", frames, noise);
};

TEST_F(ReportPage, IsWellFormedWhateverTheNames) {
  const std::string page = report_page(make_report(rig));
  EXPECT_EQ(malformed_part(page), "");
  EXPECT_EQ(page.find("<i>"), std::string::npos);
  EXPECT_NE(page.find("rig &lt;1&gt; &amp; &quot;2&quot;.cal"), std::string::npos);
  EXPECT_EQ(page.find('\xE9'), std::string::npos);
  EXPECT_EQ(page.find("nan"), std::string::npos);
}

TEST_F(ReportPage, RefersToNothingOutsideItself) {
  const std::string page = report_page(make_report(rig));
  for (const char* word : {"<script", "<link", "<iframe", "<object", "@import", "url("}) {
    EXPECT_EQ(page.find(word), std::string::npos) << word;
  }
  EXPECT_GT(count_of(page, "src=\""), 0u);
  EXPECT_EQ(count_of(page, "src=\""), count_of(page, "src=\"data:image/jpeg;base64,"));
  EXPECT_GT(count_of(page, "href=\""), 0u);
  EXPECT_EQ(count_of(page, "href=\""), count_of(page, "href=\"#"));
  // The names of the two markups are no addresses to load from.
  EXPECT_EQ(count_of(page, "http"), count_of(page, "xmlns=\"http://www.w3.org/"));
}

TEST_F(ReportPage, EveryDrawingTellsWhatItShowsAndEveryPictureToo) {
  const std::string page = report_page(make_report(rig));
  EXPECT_GE(count_of(page, "<svg"), 12u);
  EXPECT_EQ(count_of(page, "<svg"), count_of(page, "role=\"img\" aria-label=\""));
  EXPECT_EQ(count_of(page, "<img"), count_of(page, "<img alt=\"Picture "));
}

TEST_F(ReportPage, TrueCalibrationIsGoodInWords) {
  const std::string section = verdict_section(make_report(rig));
  EXPECT_NE(section.find("This calibration explains its boards well."), std::string::npos);
  EXPECT_NE(section.find("boards, all of them used"), std::string::npos);
  const std::string cameras = cameras_section(make_report(rig));
  EXPECT_EQ(count_of(cameras, "Good: corners are off by 0.1"), 2u) << cameras.substr(0, 2000);
}

TEST_F(ReportPage, SpoiltBoardIsListedAsLeftOut) {
  for (Eigen::Index i = 0; i < rig.corners.back()[2][0].cols(); i += 2) {
    rig.corners.back()[2][0](0, i) += 14;
  }
  const report_content content = make_report(rig);
  const std::string section = left_out_section(content);
  EXPECT_EQ(count_of(section, "<tr>"), 2u) << section;  // the heading and one board
  EXPECT_NE(section.find("frame 3"), std::string::npos) << section;
  EXPECT_NE(verdict_section(content).find("1 left out"), std::string::npos);
}

TEST_F(ReportPage, PicturesThatCannotBeUsedAreListedWithTheReason) {
  report_content content = make_report(rig);
  picture_finding& small = content.input.found[0][1][0];
  small.state = picture_state::wrong_size;
  small.width = 64;
  small.height = 48;
  content.input.found[0][2][0].state = picture_state::unreadable;
  const std::string section = left_out_section(content);
  EXPECT_NE(section.find("In 2 pictures"), std::string::npos) << section;
  EXPECT_NE(section.find("it is 64 x 48, not"), std::string::npos) << section;
  EXPECT_NE(section.find("opened or decoded"), std::string::npos) << section;
  EXPECT_EQ(malformed_part("<!DOCTYPE html>" + section), "");
}

TEST_F(ReportPage, NothingLeftOutMakesNoSection) {
  EXPECT_EQ(left_out_section(make_report(rig)), "");
}

TEST_F(ReportPage, DrawsAResidualForEachCorner) {
  const report_content content = make_report(rig);
  std::size_t corners = 0;
  for (std::size_t s = 0; s < rig.corners.size(); ++s) {
    const std::vector<std::size_t>& cameras = rig.description.sets[s].cameras;
    for (const auto& views : rig.corners[s]) {
      for (std::size_t c = 0; c < cameras.size(); ++c) {
        if (cameras[c] == 1) corners += static_cast<std::size_t>(views[c].cols());
      }
    }
  }
  ASSERT_GT(corners, 0u);
  ASSERT_LT(corners, 1500u);  // from where on not all are drawn
  EXPECT_EQ(used_corners(content, 1).size(), corners);
  EXPECT_EQ(count_of(residual_vectors_chart(content, 1), "h0"), corners);
}

TEST_F(ReportPage, TellsTheShareOfThePictureThatBoardsCovered) {
  // Plainly, on a finer grid: within all four edges of any board's outline, which is a bit
  // less than its curved rim holds.
  const camera_details details = rig.details()[0];
  const int width = rig.description.board.width, height = rig.description.board.height;
  std::size_t covered = 0, all = 0;
  for (double x = 2; x < details.width; x += 5) {
    for (double y = 2; y < details.height; y += 5) {
      bool inside = false;
      for (std::size_t s = 0; s < rig.corners.size(); ++s) {
        const std::vector<std::size_t>& cameras = rig.description.sets[s].cameras;
        for (const auto& views : rig.corners[s]) {
          for (std::size_t c = 0; c < cameras.size(); ++c) {
            if (cameras[c] != 0) continue;
            int left = 0;
            const int outline[] = {0, width - 1, width * height - 1, width * (height - 1), 0};
            for (int k = 0; k < 4; ++k) {
              const Eigen::Vector2d a = views[c].col(outline[k]), b = views[c].col(outline[k + 1]);
              left += (b - a).x() * (y - a.y()) - (b - a).y() * (x - a.x()) > 0 ? 1 : -1;
            }
            inside = inside || std::abs(left) == 4;
          }
        }
      }
      covered += inside;
      ++all;
    }
  }
  const double expected = 100.0 * static_cast<double>(covered) / static_cast<double>(all);
  const std::string chart = coverage_chart(make_report(rig), 0);
  const std::size_t at = chart.find(" % of the picture");
  ASSERT_NE(at, std::string::npos);
  const double told = std::atof(chart.c_str() + chart.rfind(' ', at - 1));
  EXPECT_GT(expected, 10);
  EXPECT_NEAR(told, expected, 4);
}

TEST_F(ReportPage, TellsHowFarTheBoardsStood) {
  double nearest = 1e9, farthest = 0;
  for (const ModelPose& pose : rig.poses.back()) {
    nearest = std::min(nearest, pose.translation.norm());
    farthest = std::max(farthest, pose.translation.norm());
  }
  const std::string section = distances_section(make_report(rig));
  const std::string row = "data-heading=\"Nearest\">";
  std::size_t at = 0;
  for (std::size_t s = 0; s < rig.poses.size(); ++s) at = section.find(row, at) + row.size();
  EXPECT_NEAR(std::atof(section.c_str() + at), nearest, 0.01 * nearest);
  at = section.find("Farthest\">", at) + 10;
  EXPECT_NEAR(std::atof(section.c_str() + at), farthest, 0.01 * farthest);
}

TEST_F(ReportPage, TellsWhatTheBoardsLeaveOpen) {
  report_content content = make_report(rig);
  EXPECT_EQ(uncertainty_section(content), "");
  content.uncertainty = rig_uncertainty{0.1, {{0.25, 1.5}, {0.5, 2.5}}, {{0, 1, std::nullopt}}};
  const std::string section = uncertainty_section(content);
  for (const char* told : {">0.25<", ">1.5<", ">0.50<", ">2.5<", ">1 and 2<", "meet"}) {
    EXPECT_NE(section.find(told), std::string::npos) << told;
  }
}

TEST_F(ReportPage, TellsWhyTheUncertaintyOfAnUnusableCalibrationIsLeftOut) {
  report_content content = make_report(rig);
  content.quality.judged = verdict::unusable;
  EXPECT_NE(uncertainty_section(content).find("unusable already"), std::string::npos);
}

TEST_F(ReportPage, RigWithoutAnyBoardStillMakesAPage) {
  rig.corners.assign(rig.corners.size(), {});
  const report_content content = make_report(rig);
  const std::string page = report_page(content);
  EXPECT_EQ(malformed_part(page), "");
  EXPECT_EQ(page.find(">nan<"), std::string::npos);
  EXPECT_EQ(content.quality.judged, verdict::unusable);
  EXPECT_NE(page.find("Don&#39;t use this calibration."), std::string::npos);
}

TEST(ReportCommand, RefusesToOverwriteAPicture) {
  const testing::working_folder folder;
  for (const char* picture : {"a1.png", "b1.png"}) write_file(picture, "kept");
  write_file("rig.txt", testing::pair_configuration(".", "found.cal"));
  const tool_run run = run_here("report rig.cal rig.txt --out b1.png");
  EXPECT_EQ(run.code, OCPAN_OUTPUT);
  EXPECT_NE(run.err.find("--out: b1.png is an input"), std::string::npos) << run.err;
}

TEST(ReportCommand, TellsWhatItCannotReadOrWrite) {
  const temp_folder folder;
  const std::string configuration = folder.file("rig.txt"), calibration = folder.file("rig.cal");
  write_file(configuration, "nothing\n");
  write_file(calibration, "Width:64 Height:48\nL:1\n");
  const std::string both = "report " + calibration + " " + configuration + " --out ";
  EXPECT_EQ(run_here("report " + folder.file("none") + " " + configuration + " --out " +
                     folder.file("r.html"))
                .code,
            OCPAN_INPUT);
  EXPECT_EQ(run_here(both + folder.file("none/r.html")).code, OCPAN_OUTPUT);
  const tool_run onto_input = run_here(both + configuration);
  EXPECT_EQ(onto_input.code, OCPAN_OUTPUT);
  EXPECT_EQ(testing::read_file(configuration), "nothing\n");
  EXPECT_NE(run_here(both + folder.file("r.html")).code, 0);
  EXPECT_FALSE(std::filesystem::exists(folder.file("r.html")));
  EXPECT_EQ(run_here("report " + calibration + " " + configuration).code, 64);
}

}  // namespace
}  // namespace ocpan
