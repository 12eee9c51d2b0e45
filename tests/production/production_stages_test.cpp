// A whole run beside its stages one after the other.

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "calibration/read_image.h"
#include "platform/processors.h"
#include "production/corner_detection.h"
#include "production/corner_refinement.h"
#include "production/debug_pictures.h"
#include "production/fixture_refinement.h"
#include "production/production_report.h"
#include "production/quad_colours.h"
#include "production/quads.h"
#include "production/rotation_search.h"
#include "tests/production/coarse_run.h"

namespace ocpan {
namespace {

using testing::fixture_job;
using testing::read_file;

class ProductionStages : public testing::ProductionRun {
 protected:
  // Moved far enough that some matches stay a good part of a cell apart after the search.
  static constexpr fixture_disturbance far = {3, 20, 0.02, 1};
};

// What the stages hand on, for a single pair.
struct plain_run {
  std::vector<camera_details> details;
  std::vector<cv::Mat> pictures;
  std::vector<std::vector<prod_corner>> corners;
  std::vector<quad_lists> quads;
  corner_index_lists first_pass, second_pass;
  rig refined;
  prod_measures measures;
};

// The numbers that the line has settled on are written out.
void run_stages(plain_run& run, const fixture_job& job, double radius) {
  selen360_cal_file start(1000.0F);
  ASSERT_EQ(start.load(job.files().disturbed_calibration.c_str()), code::success);
  run.details = start.details();
  const rig& models = start.models();
  const camera_pair pair{0, 1};
  corner_scratch scratch;
  std::vector<Eigen::Matrix2Xd> pixels(2);
  std::vector<sphere_points> points, turned;
  for (std::size_t c = 0; c < 2; ++c) {
    const auto& [width, height, hfov, lens] = run.details[c];
    cv::Mat& picture = run.pictures.emplace_back();
    ASSERT_EQ(read_image(picture, job.files().pictures[c].c_str(), 0, width, height),
              code::success);
    const auto& corners = run.corners.emplace_back(
        refine_corners(picture, detect_corner_candidates(picture, scratch)));
    const auto found = build_quads(corners);
    run.quads.push_back(classify_quads(found, quad_intensity_stats(picture, found, corners)));
    pixels[c].resize(2, static_cast<Eigen::Index>(corners.size()));
    Eigen::Index k = 0;
    for (const prod_corner& corner : corners) pixels[c].col(k++) << corner.x, corner.y;
    points.push_back(features_to_sphere(
        models[c], pixels[c], build_sphere_grid(models[c], width, height, radius), radius));
  }
  const double scale = quad_scale(run.quads, points);
  std::vector<quad_match> matches =
      match_quads(run.quads[0].black, run.quads[1].black, points[0], points[1]);
  for (const quad_match& white :
       match_quads(run.quads[0].white, run.quads[1].white, points[0], points[1])) {
    matches.push_back(white);
  }
  run.first_pass = corner_pairs(matches);
  const pair_map<corner_index_lists> first_pass{{pair, run.first_pass}};
  const pair_map<std::vector<quad_match>> quad_matches{{pair, matches}};
  const pair_map<point_lists> pair_points{{pair,
                                           {select_points(points[0], run.first_pass.first),
                                            select_points(points[1], run.first_pass.second)}}};
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
  run.second_pass = match_nearest(turned[0], turned[1], scale / 2);
  const pair_map<corner_index_lists> second_pass{{pair, run.second_pass}};
  auto measurements = build_pair_measurements(pairs, second_pass, run.corners, turned, radius);
  refine_rig(run.refined, measurements, turned_models, measurements, radius, {5, 20, 0.1F});

  measure_reprojection(run.measures, run.refined, measurements);
  std::vector<sphere_points> after;
  for (std::size_t c = 0; c < 2; ++c) {
    const auto& [width, height, hfov, lens] = run.details[c];
    after.push_back(features_to_sphere(run.refined[c], pixels[c],
                                       build_sphere_grid(run.refined[c], width, height, radius),
                                       radius));
  }
  measure_deltas(run.measures, points, after, scale);
}

// A run left the calibration, the report and the results of the stages.
void expect_outcome(const plain_run& stages, const fixture_job& job) {
  const std::string report = read_file("tmp/Prod_QA_Measures.txt");
  EXPECT_EQ(job.max_error(), stages.measures.reprojection_max);
  EXPECT_EQ(job.mean_error(), stages.measures.reprojection_mean);
  EXPECT_EQ(job.samples(), stages.measures.point_count);
  write_production_report(stages.measures, 2);
  EXPECT_EQ(read_file("tmp/Prod_QA_Measures.txt"), report);
  ASSERT_EQ(selen360_cal_file(stages.refined, stages.details).save("expected.txt"), code::success);
  EXPECT_EQ(read_file(job.output()), read_file("expected.txt"));
}

TEST_F(ProductionStages, HandOnWhatTheOneBeforeGave) {
  fixture_job job = render_job(60, ".", far);
  ASSERT_EQ(run(job), code::success);
  plain_run stages;
  run_stages(stages, job, 1000);
  expect_outcome(stages, job);
}

TEST_F(ProductionStages, TakeTheRadiusInMillimetresOfTheFloatInMetres) {
  fixture_job job = render_job(testing::fixture_rig(2, {480, 360, 120, 1}, 60, 21), ".",
                               {4, 0.05, 0.0005, 1}, 700);
  ASSERT_EQ(run(job), code::success);
  plain_run stages;
  // The float nearest to 0.7 is 0.699999988079071044921875.
  run_stages(stages, job, 699.999988079071044921875);
  expect_outcome(stages, job);
}

TEST_F(ProductionStages, DrawTheCornersAndQuadsOfEachCamera) {
  fixture_job job = make_job();
  ASSERT_EQ(run(job), code::success);
  plain_run stages;
  run_stages(stages, job, 1000);
  std::filesystem::create_directories("again/tmp");
  std::filesystem::current_path("again");
  for (std::size_t c = 0; c < 2; ++c) {
    write_corner_picture(stages.pictures[c], stages.corners[c], c);
    write_quad_pictures(stages.pictures[c], stages.corners[c], stages.quads[c], c);
  }
  std::filesystem::current_path("..");
  int compared = 0;
  std::set<std::string> different;
  for (const auto& entry : std::filesystem::directory_iterator("again/tmp")) {
    const std::string name = entry.path().filename().string();
    const std::string bytes = read_file(entry.path());
    EXPECT_TRUE(read_file("tmp/" + name) == bytes) << name;
    different.insert(bytes);
    ++compared;
  }
  EXPECT_EQ(compared, 6);
  EXPECT_EQ(different.size(), 6u);
}

// How much of a corner's cross differs from what the camera saw, 0 to 1.
double cross_share(const cv::Mat& drawn, const cv::Mat& seen, const prod_corner& corner) {
  const int x = static_cast<int>(std::lround(corner.x));
  const int y = static_cast<int>(std::lround(corner.y));
  int marked = 0;
  for (int arm = -5; arm <= 5; ++arm) {
    for (const cv::Point at : {cv::Point(x + arm, y), cv::Point(x, y + arm)}) {
      if (arm == 0 || !cv::Rect({}, seen.size()).contains(at)) continue;
      const auto& pixel = drawn.at<cv::Vec3b>(at);
      const int grey = seen.at<unsigned char>(at);
      marked += std::max({std::abs(pixel[0] - grey), std::abs(pixel[1] - grey),
                          std::abs(pixel[2] - grey)}) > 20;
    }
  }
  return marked / 20.0;
}

// A match picture shows its camera's picture with crosses on the corners of a list, and on
// hardly any other. Colours and places of the numbers are random: a few crosses don't stand
// out, and a few corners are covered by a near one's number.
void expect_crosses(const std::string& name, const plain_run& stages, std::size_t camera,
                    const std::vector<std::int32_t>& matched) {
  const cv::Mat drawn = cv::imread("tmp/" + name + ".jpg");
  const cv::Mat& seen = stages.pictures[camera];
  ASSERT_EQ(drawn.size(), seen.size());
  const std::set<std::int32_t> expected(matched.begin(), matched.end());
  std::size_t found = 0, others = 0;
  for (std::size_t k = 0; k < stages.corners[camera].size(); ++k) {
    const bool cross = cross_share(drawn, seen, stages.corners[camera][k]) > 0.7;
    (expected.contains(static_cast<std::int32_t>(k)) ? found : others) += cross;
  }
  const double all = static_cast<double>(expected.size());
  EXPECT_GT(static_cast<double>(found), 0.85 * all) << name;
  EXPECT_LT(static_cast<double>(others), 0.1 * all) << name;
}

TEST_F(ProductionStages, DrawTheMatchesOfEachPass) {
  fixture_job job = render_job(60, ".", far);
  ASSERT_EQ(run(job), code::success);
  plain_run stages;
  run_stages(stages, job, 1000);
  const auto count = [](const std::vector<std::int32_t>& list) {
    return static_cast<double>(std::set<std::int32_t>(list.begin(), list.end()).size());
  };
  ASSERT_GT(count(stages.first_pass.first), 1.25 * count(stages.second_pass.first));
  ASSERT_GT(count(stages.first_pass.second), 1.25 * count(stages.second_pass.second));
  expect_crosses("2.naive_matches_01_0", stages, 0, stages.first_pass.first);
  expect_crosses("2.naive_matches_01_1", stages, 1, stages.first_pass.second);
  expect_crosses("3.matches_01_0", stages, 0, stages.second_pass.first);
  expect_crosses("3.matches_01_1", stages, 1, stages.second_pass.second);
}

}  // namespace
}  // namespace ocpan
