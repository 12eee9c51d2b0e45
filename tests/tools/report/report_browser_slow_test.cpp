// The report as a browser shows it. Skipped where there is no chromium.

#include <cstdlib>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include "simulator/board_series.h"
#include "simulator/presets.h"
#include "tests/tools/tool_process.h"

namespace ocpan {
namespace {

using testing::read_file;
using testing::run_tool;
using testing::temp_folder;
using testing::tool_run;
using testing::write_file;

// Behind the page's own content: tells its parent, once all is laid out, how wide the page
// is, and of its drawings which words leave them or lie upon each other.
constexpr const char* measuring_script = R"(<script>
addEventListener('load', () => {
  let right = 0, cut = [], upon = [], smallest = 99, broken = 0;
  for (const e of document.querySelectorAll('body *')) {
    if (!e.closest('svg')) right = Math.max(right, e.getBoundingClientRect().right);
  }
  for (const image of document.images) broken += image.naturalWidth === 0;
  for (const svg of document.querySelectorAll('svg')) {
    const frame = svg.getBoundingClientRect(), words = [];
    const scale = frame.width / svg.viewBox.baseVal.width;
    for (const text of svg.querySelectorAll('text')) {
      const box = text.getBoundingClientRect();
      smallest = Math.min(smallest, parseFloat(getComputedStyle(text).fontSize) * scale);
      if (box.left < frame.left - 1 || box.right > frame.right + 1 || box.top < frame.top - 1 ||
          box.bottom > frame.bottom + 1) cut.push(text.textContent);
      for (const other of words) {
        if (box.left < other.right - 1 && other.left < box.right - 1 &&
            box.top < other.bottom - 3 && other.top < box.bottom - 3) upon.push(text.textContent);
      }
      words.push(box);
    }
  }
  parent.postMessage(JSON.stringify({right, cut, upon, smallest, broken,
    scroll: document.documentElement.scrollWidth,
    drawings: document.querySelectorAll('svg').length}), '*');
});
</script>)";

constexpr const char* boards = "a_folder_whose_name_is_wider_than_the_screen_of_a_phone";

class ReportInBrowser : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (std::system("command -v chromium >/dev/null 2>&1") != 0) return;
    folder = new temp_folder;
    rig_description description;
    ASSERT_EQ(make_preset(description, "2-lens0"), "");
    for (series_description& set : description.sets) set.frames = 4;
    ASSERT_EQ(write_board_series(description, folder->file(boards), {}), "");
    const tool_run run =
        run_tool("report " + folder->file(std::string(boards) + "/truth.cal") + " " +
                 folder->file(std::string(boards) + "/calibration.txt") + " --out " + page());
    EXPECT_TRUE(run.code == 0 || run.code == 10) << run.code << run.err;
    EXPECT_NE(run.out.find("report " + page()), std::string::npos) << run.out;
  }
  static void TearDownTestSuite() {
    delete folder;
    folder = nullptr;
  }
  void SetUp() override {
    if (folder == nullptr) GTEST_SKIP() << "there is no chromium; scripts/install-dependencies";
  }

  static std::string page() { return folder->file("report.html"); }

  // What chromium prints for a file, loaded in a window of a width.
  static std::string browse(const std::string& file, const std::string& options) {
    const temp_folder profile;
    const std::string out = folder->file("browsed");
    const std::string command =
        "timeout 100 chromium --headless --no-sandbox --disable-gpu --disable-quic "
        "--no-first-run --disable-background-networking --disable-component-update "
        "--disable-sync --hide-scrollbars --user-data-dir=" +
        profile.path().string() + " " + options + " 'file://" + file + "' >'" + out +
        "' 2>/dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return read_file(out);
  }

  // How the page lies in a frame of a width: a window has a least width, a frame has none.
  static nlohmann::json measured_at(int width) {
    std::string measured = read_file(page());
    measured.insert(measured.rfind("</body>"), measuring_script);
    write_file(folder->file("measured.html"), measured);
    write_file(folder->file("frame.html"),
               "<!DOCTYPE html><body><script>onmessage = e => "
               "{ document.body.textContent = '[[' + e.data + ']]'; };</script>"
               "<iframe src='measured.html' style='border:0;height:900px;width:" +
                   std::to_string(width) + "px'></iframe></body>");
    const std::string dom = browse(folder->file("frame.html"),
                                   "--window-size=1400,1000 --virtual-time-budget=5000 --dump-dom");
    const std::size_t begin = dom.find("[[{"), end = dom.find("}]]");
    if (begin == std::string::npos || end == std::string::npos) return nullptr;
    return nlohmann::json::parse(dom.substr(begin + 2, end - begin - 1));
  }

  static void expect_good_layout(int width, double smallest_letters) {
    const nlohmann::json seen = measured_at(width);
    ASSERT_TRUE(seen.is_object());
    EXPECT_LE(seen["scroll"].get<double>(), width);
    EXPECT_LE(seen["right"].get<double>(), width);
    EXPECT_EQ(seen["cut"].dump(), "[]");
    EXPECT_EQ(seen["upon"].dump(), "[]");
    EXPECT_EQ(seen["broken"], 0);
    EXPECT_GE(seen["smallest"].get<double>(), smallest_letters);
    EXPECT_GE(seen["drawings"].get<int>(), 12);
  }

  static temp_folder* folder;
};

temp_folder* ReportInBrowser::folder = nullptr;

TEST_F(ReportInBrowser, IsAWholeXmlDocument) {
  const std::string xml = folder->file("report.xhtml");
  write_file(xml, read_file(page()));
  const std::string dom = browse(xml, "--dump-dom");
  EXPECT_EQ(dom.find("parsererror"), std::string::npos);
  EXPECT_NE(dom.find("</footer>"), std::string::npos);
}

TEST_F(ReportInBrowser, FitsADesktop) { expect_good_layout(1200, 11); }

TEST_F(ReportInBrowser, FitsAPhone) { expect_good_layout(390, 9); }

TEST_F(ReportInBrowser, ShowsSomething) {
  const std::string shot = folder->file("shot.png");
  browse(page(), "--window-size=1200,2000 --screenshot='" + shot + "'");
  const cv::Mat picture = cv::imread(shot);
  ASSERT_EQ(picture.cols, 1200);
  cv::Scalar mean, deviation;
  cv::meanStdDev(picture, mean, deviation);
  EXPECT_GT(mean[0], 180);  // a light page
  EXPECT_GT(deviation[0], 15);
}

}  // namespace
}  // namespace ocpan
