#include "production/production_run.h"

#include <array>
#include <map>
#include <new>

#include "production/production_codes.h"
#include "tests/production/coarse_run.h"
#include "tests/production/failing_memory.h"

namespace ocpan {
namespace {

using testing::failing_array_memory;
using testing::fixture_job;
using testing::ProductionRun;
using testing::read_file;
using testing::write_file;

TEST_F(ProductionRun, RefinesACalibrationWithoutAWord) {
  fixture_job job = make_job();
  ASSERT_EQ(run(job), code::success);
  EXPECT_EQ(printed_, "");
  EXPECT_GT(job.seam_before(), 3);
  EXPECT_LT(job.seam_after(), 0.03);
  EXPECT_LT(job.mean_error(), 0.1);
  EXPECT_GE(job.max_error(), job.mean_error());
  EXPECT_GT(job.samples(), 60);
}

TEST_F(ProductionRun, LeavesReadableDebugPicturesAndTheReport) {
  fixture_job job = make_job();
  ASSERT_EQ(run(job), code::success);
  EXPECT_EQ(
      names_in_tmp(),
      (std::set<std::string>{"0.ori_point_0.jpg", "0.ori_point_1.jpg", "1.black_quads_0.jpg",
                             "1.black_quads_1.jpg", "1.white_quads_0.jpg", "1.white_quads_1.jpg",
                             "2.naive_matches_01_0.jpg", "2.naive_matches_01_1.jpg",
                             "3.matches_01_0.jpg", "3.matches_01_1.jpg", "Prod_QA_Measures.txt"}));
  for (const std::string& name : names_in_tmp()) {
    if (name == "Prod_QA_Measures.txt") continue;
    EXPECT_EQ(cv::imread("tmp/" + name, cv::IMREAD_UNCHANGED).type(), CV_8UC3) << name;
    EXPECT_EQ(cv::imread("tmp/" + name).size(), cv::Size(480, 360)) << name;
  }
  const std::string report = read_file("tmp/Prod_QA_Measures.txt");
  EXPECT_EQ(report.rfind("Camera Number : 2\nCalibration Sets Number : 1\n", 0), 0u) << report;
}

TEST_F(ProductionRun, GivesTheSameBytesFromTheSameStart) {
  fixture_job job = make_job();
  ASSERT_EQ(run(job), code::success);
  std::map<std::string, std::string> first;
  const auto is_random = [](const std::string& name) { return name[0] == '2' || name[0] == '3'; };
  for (const std::string& name : names_in_tmp()) {
    if (!is_random(name)) first[name] = read_file("tmp/" + name);
  }
  const std::string output = read_file(job.output());
  std::filesystem::remove_all("tmp");
  std::filesystem::create_directory("tmp");
  ASSERT_EQ(run(job), code::success);
  EXPECT_EQ(read_file(job.output()), output);
  EXPECT_EQ(first.size(), 7u);
  for (const auto& [name, bytes] : first) EXPECT_TRUE(read_file("tmp/" + name) == bytes) << name;
}

TEST_F(ProductionRun, NeedsNoFolderForItsPictures) {
  std::filesystem::remove("tmp");
  fixture_job job = make_job();
  EXPECT_EQ(run(job), code::success);
  EXPECT_EQ(printed_, "");
  EXPECT_TRUE(std::filesystem::exists(job.output()));
  EXPECT_FALSE(std::filesystem::exists("tmp"));
}

TEST_F(ProductionRun, KeepsTheCameraFactsInTheOutput) {
  fixture_job job = make_job();
  ASSERT_EQ(run(job), code::success);
  selen360_cal_file refined(1000.0F);
  ASSERT_EQ(refined.load(job.output().c_str()), code::success);
  ASSERT_EQ(refined.details().size(), 2u);
  EXPECT_EQ(refined.details()[1].width, 480);
  EXPECT_EQ(refined.details()[1].height, 360);
  EXPECT_EQ(refined.details()[1].lens, 1);
  EXPECT_EQ(refined.details()[1].hfov, 120.0F);
  for (const model_map& model : refined.models()) EXPECT_EQ(model.size(), 18u);
}

TEST_F(ProductionRun, StopsAfterTheCornerPicturesIfACameraSeesNoCorner) {
  fixture_job job = make_job();
  blank(job.files().pictures[1]);
  expect_failure(job, fixture_unusable, "");
  EXPECT_EQ(names_in_tmp(), (std::set<std::string>{"0.ori_point_0.jpg", "0.ori_point_1.jpg"}));
}

TEST_F(ProductionRun, StopsAfterTheQuadPicturesIfTheCamerasSeeNothingInCommon) {
  fixture_job job = render_job(180, ".");
  expect_failure(job, fixture_unusable, "Error detected!\n");
  EXPECT_EQ(names_in_tmp(), (std::set<std::string>{"0.ori_point_0.jpg", "0.ori_point_1.jpg",
                                                   "1.black_quads_0.jpg", "1.black_quads_1.jpg",
                                                   "1.white_quads_0.jpg", "1.white_quads_1.jpg"}));
}

TEST_F(ProductionRun, StopsIfThePicturesShowNoQuadInCommon) {
  // The cameras overlap, but the second one sees a single crossing of two edges: a corner,
  // and no quad.
  fixture_job job = make_job();
  cv::Mat crossing(360, 480, CV_8UC1, cv::Scalar(30));
  crossing(cv::Rect(0, 0, 240, 180)) = 220;
  crossing(cv::Rect(240, 180, 240, 180)) = 220;
  cv::imwrite(job.files().pictures[1], crossing);
  expect_failure(job, fixture_unusable, "Error detected!\n");
  EXPECT_EQ(names_in_tmp().count("2.naive_matches_01_1.jpg"), 1u);
  EXPECT_EQ(names_in_tmp().count("3.matches_01_1.jpg"), 0u);
}

TEST_F(ProductionRun, TellsOfAPictureThatIsMissing) {
  fixture_job job = make_job();
  std::filesystem::remove(job.files().pictures[1]);
  expect_failure(job, code::content_malformed,
                 "Error opening image file " + job.files().pictures[1] + "\n");
  EXPECT_TRUE(names_in_tmp().empty());
}

TEST_F(ProductionRun, RefusesAPictureOfAnotherSize) {
  fixture_job job = make_job();
  cv::imwrite(job.files().pictures[0], cv::Mat(360, 481, CV_8UC1, cv::Scalar(128)));
  write_file(job.output(), "older");
  EXPECT_EQ(run(job), code::input_unusable);
  EXPECT_EQ(printed_.rfind("Bad or no Image Data for file " + job.files().pictures[0], 0), 0u);
  EXPECT_EQ(read_file(job.output()), "older");
}

TEST_F(ProductionRun, TellsOfACalibrationThatIsMissing) {
  fixture_job job = make_job();
  std::filesystem::remove(job.files().disturbed_calibration);
  expect_failure(job, code::input_unusable,
                 "Couldn't open: " + job.files().disturbed_calibration +
                     "\nLoading Calibration data failed\n");
}

TEST_F(ProductionRun, ComparesTheNumberOfModelsBeforeAnyPictureIsRead) {
  fixture_job job = make_job();
  const std::string name = job.files().disturbed_calibration;
  write_file(name, read_file(name) + "C_0:0\n");
  std::filesystem::remove(job.files().pictures[0]);
  expect_failure(job, code::argument_invalid,
                 "Number of cameras in cal file (3) doesn't match the number of pictures (2)\n");
}

TEST_F(ProductionRun, ComparesTheNumberOfDetailRecordsToo) {
  fixture_job job = make_job();
  const std::string name = job.files().disturbed_calibration;
  write_file(name, read_file(name) + "Width:480\nWidth:480\n");
  std::filesystem::remove(job.files().pictures[0]);
  expect_failure(job, code::argument_invalid,
                 "Number of cameras in cal file (4) doesn't match the number of pictures (2)\n");
}

TEST_F(ProductionRun, TellsOfAnOutputThatCannotBeWrittenAndWritesNoReport) {
  fixture_job job = make_job();
  std::filesystem::create_directory(job.output());
  EXPECT_EQ(run(job), code::output_unopened);
  EXPECT_EQ(printed_, "Couldn't open: " + job.output() + "\n");
  EXPECT_FALSE(std::filesystem::exists("tmp/Prod_QA_Measures.txt"));
}

TEST_F(ProductionRun, WantsNoResults) {
  fixture_job job = make_job();
  const std::vector<std::string>& names = job.files().pictures;
  const std::vector<const char*> pictures{names[0].c_str(), names[1].c_str()};
  EXPECT_EQ(calibrate_in_fixture(job.files().disturbed_calibration.c_str(), "refined.txt", 1.0F,
                                 pictures, nullptr),
            code::success);
}

TEST_F(ProductionRun, HandsOutItsResultsWhenTheOutputCannotBeWritten) {
  fixture_job good = make_job();
  ASSERT_EQ(run(good), code::success);
  std::filesystem::remove(good.output());
  std::filesystem::create_directory(good.output());
  fixture_job failing = good;
  failing.forget_results();
  EXPECT_EQ(run(failing), code::output_unopened);
  EXPECT_EQ(failing.max_error(), good.max_error());
  EXPECT_EQ(failing.mean_error(), good.mean_error());
  EXPECT_EQ(failing.samples(), good.samples());
  EXPECT_GT(good.samples(), 0);
}

TEST_F(ProductionRun, HandsOutNoughtsIfItFailsBeforeItHasMeasured) {
  const std::vector<const char*> pictures{"a.png", "b.png"};
  std::array<double, 3> results{-1, -1, -1};
  testing::printed_by([&] {
    EXPECT_EQ(calibrate_in_fixture("none.txt", "refined.txt", 1, pictures, results.data()),
              code::input_unusable);
  });
  EXPECT_EQ(results, (std::array<double, 3>{0, 0, 0}));
}

#ifdef __GLIBCXX__  // whose streams take the buffer of a file by new[]
TEST_F(ProductionRun, HandsOutItsResultsWhenMemoryRunsOut) {
  write_file("calibration.txt", "");
  const std::vector<const char*> pictures{"a.png", "b.png"};
  std::array<double, 3> results{-1, -1, -1};
  const failing_array_memory none([](std::size_t) { return true; });
  EXPECT_THROW(static_cast<void>(calibrate_in_fixture("calibration.txt", "refined.txt", 1, pictures,
                                                      results.data())),
               std::bad_alloc);
  EXPECT_EQ(results, (std::array<double, 3>{0, 0, 0}));
}

TEST_F(ProductionRun, LosesTheReportForWantOfMemoryWithoutAWord) {
  fixture_job good = make_job();
  ASSERT_EQ(run(good), code::success);
  const std::string refined = read_file(good.output());
  std::filesystem::remove(good.output());
  std::filesystem::remove("tmp/Prod_QA_Measures.txt");
  fixture_job losing = good;
  losing.forget_results();
  int result = 99;
  printed_ = testing::printed_by([&] {
    // No memory from where the calibration stands in its file.
    static const std::filesystem::path output = "refined.txt";
    const failing_array_memory none([](std::size_t) {
      std::error_code missing;
      const auto size = std::filesystem::file_size(output, missing);
      return !missing && size > 0;
    });
    EXPECT_NO_THROW(result = losing.run());
  });
  EXPECT_EQ(result, code::success);
  EXPECT_EQ(printed_, "");
  EXPECT_FALSE(std::filesystem::exists("tmp/Prod_QA_Measures.txt"));
  EXPECT_EQ(read_file(losing.output()), refined);
  EXPECT_EQ(losing.max_error(), good.max_error());
  EXPECT_EQ(losing.mean_error(), good.mean_error());
  EXPECT_EQ(losing.samples(), good.samples());
}
#endif

TEST(ProductionSets, HoldOnePictureEach) {
  const std::vector<const char*> pictures{"a.png", "b.png"};
  const std::vector<set_config> sets = production_sets(pictures);
  ASSERT_EQ(sets.size(), 2u);
  for (std::size_t c = 0; c < 2; ++c) {
    ASSERT_EQ(sets[c].cameras.size(), 1u);
    EXPECT_EQ(sets[c].cameras[0].id, static_cast<int>(c) + 1);
    EXPECT_EQ(sets[c].cameras[0].files, (std::vector<const char*>{pictures[c]}));
    EXPECT_EQ(sets[c].cameras[0].file_type, 0);
  }
}

}  // namespace
}  // namespace ocpan
