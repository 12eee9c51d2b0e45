#include "production/production_run.h"

#include <set>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "calibration/read_image.h"
#include "model/rigid_rotation.h"
#include "platform/processors.h"
#include "production/corner_detection.h"
#include "production/corner_refinement.h"
#include "production/fixture_refinement.h"
#include "production/production_codes.h"
#include "production/production_report.h"
#include "production/quad_colours.h"
#include "production/quads.h"
#include "production/rotation_search.h"
#include "tests/production/fixture_job.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::fixture_job;
using testing::fixture_rig;
using testing::printed_by;
using testing::read_file;
using testing::write_file;

// Two cameras before a coarse pattern: small pictures, and a run of a fraction of a second.
class ProductionRun : public ::testing::Test {
 protected:
  ProductionRun() { std::filesystem::create_directory("tmp"); }

  static fixture_job render_job(double step_degrees, const std::string& folder,
                                const fixture_disturbance& disturbance = {0.7 * 7.5, 0.05, 0.0005,
                                                                          1}) {
    const rig_description description = fixture_rig(2, {480, 360, 120, 1}, step_degrees, 30);
    fixture_description fixture = suitable_fixture(description);
    fixture.cell_degrees = 7.5;
    return {description, fixture, disturbance, folder};
  }
  // A job whose cameras overlap, rendered once for all tests.
  static fixture_job make_job() {
    static const testing::temp_folder folder;
    static const fixture_job rendered = render_job(60, folder.path().string());
    return {rendered, "."};
  }
  int run(fixture_job& job) {
    int result = 99;
    printed_ = printed_by([&] { result = job.run(); });
    return result;
  }
  static std::set<std::string> names_in_tmp() {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("tmp")) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }
  // Runs a job that is to fail, over an older output that must not be touched.
  void expect_failure(fixture_job& job, int result, const std::string& words) {
    write_file(job.output(), "older");
    EXPECT_EQ(run(job), result);
    EXPECT_EQ(printed_, words);
    EXPECT_EQ(read_file(job.output()), "older");
    EXPECT_FALSE(std::filesystem::exists("tmp/Prod_QA_Measures.txt"));
  }
  static void blank(const std::string& picture) {
    cv::imwrite(picture, cv::Mat(360, 480, CV_8UC1, cv::Scalar(128)));
  }

  testing::working_folder folder_;
  std::string printed_;
};

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

// The run's stages one after the other, for a single pair: what is handed on, and the
// numbers that the line has settled on.
TEST_F(ProductionRun, HandsEachStageWhatTheOneBeforeGave) {
  // Moved far enough that some matches stay a good part of a cell apart after the search.
  fixture_job job = render_job(60, ".", {3, 20, 0.02, 1});
  ASSERT_EQ(run(job), code::success);
  const std::string output = read_file(job.output());
  const std::string report = read_file("tmp/Prod_QA_Measures.txt");

  selen360_cal_file start(1000.0F);
  ASSERT_EQ(start.load(job.files().disturbed_calibration.c_str()), code::success);
  const rig& models = start.models();
  constexpr double radius = 1000;
  const camera_pair pair{0, 1};
  corner_scratch scratch;
  std::vector<std::vector<prod_corner>> corners;
  std::vector<Eigen::Matrix2Xd> pixels(2);
  std::vector<quad_lists> quads;
  std::vector<sphere_points> points, turned;
  for (std::size_t c = 0; c < 2; ++c) {
    cv::Mat picture;
    ASSERT_EQ(read_image(picture, job.files().pictures[c].c_str(), 0, 480, 360), code::success);
    corners.push_back(refine_corners(picture, detect_corner_candidates(picture, scratch)));
    const auto found = build_quads(corners[c]);
    quads.push_back(classify_quads(found, quad_intensity_stats(picture, found, corners[c])));
    pixels[c].resize(2, static_cast<Eigen::Index>(corners[c].size()));
    Eigen::Index k = 0;
    for (const prod_corner& corner : corners[c]) pixels[c].col(k++) << corner.x, corner.y;
    points.push_back(features_to_sphere(models[c], pixels[c],
                                        build_sphere_grid(models[c], 480, 360, radius), radius));
  }
  const double scale = quad_scale(quads, points);
  std::vector<quad_match> matches =
      match_quads(quads[0].black, quads[1].black, points[0], points[1]);
  for (const quad_match& white :
       match_quads(quads[0].white, quads[1].white, points[0], points[1])) {
    matches.push_back(white);
  }
  const pair_map<corner_index_lists> first_pass{{pair, corner_pairs(matches)}};
  const pair_map<std::vector<quad_match>> quad_matches{{pair, matches}};
  const pair_map<point_lists> pair_points{{pair,
                                           {select_points(points[0], first_pass.at(pair).first),
                                            select_points(points[1], first_pass.at(pair).second)}}};
  const std::vector<camera_pair> pairs{pair};
  const camera_graph graph = build_camera_graph(first_pass);
  const search_inputs inputs{2,       &graph, &pairs,        &first_pass,
                             &points, scale,  &quad_matches, &pair_points};
  std::vector<Eigen::Matrix3d> rotations;
  std::srand(1);
  ASSERT_EQ(rotation_search(rotations, inputs, search_worker_count(processor_count())),
            code::success);
  rig turned_models;
  for (std::size_t c = 0; c < 2; ++c) {
    turned.emplace_back(rotations[c] * points[c]);
    turned_models.push_back(rotate_model(models[c], rotations[c]));
  }
  const pair_map<corner_index_lists> second_pass{
      {pair, match_nearest(turned[0], turned[1], scale / 2)}};
  auto measurements = build_pair_measurements(pairs, second_pass, corners, turned, radius);
  rig refined;
  refine_rig(refined, measurements, turned_models, measurements, radius, {5, 20, 0.1F});

  prod_measures measures;
  measure_reprojection(measures, refined, measurements);
  std::vector<sphere_points> after;
  for (std::size_t c = 0; c < 2; ++c) {
    after.push_back(features_to_sphere(refined[c], pixels[c],
                                       build_sphere_grid(refined[c], 480, 360, radius), radius));
  }
  measure_deltas(measures, points, after, scale);
  EXPECT_EQ(job.max_error(), measures.reprojection_max);
  EXPECT_EQ(job.mean_error(), measures.reprojection_mean);
  EXPECT_EQ(job.samples(), measures.point_count);
  write_production_report(measures, 2);
  EXPECT_EQ(read_file("tmp/Prod_QA_Measures.txt"), report);
  ASSERT_EQ(selen360_cal_file(refined, start.details()).save("expected.txt"), code::success);
  EXPECT_EQ(output, read_file("expected.txt"));
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
