#include "production/rotation_search.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "production/production_codes.h"
#include "src/result_codes.h"
#include "tests/production/search_scene.h"
#include "tests/support/captured_output.h"
#include "tests/support/no_new_threads.h"

namespace ocpan {
namespace {

using testing::make_search_scene;
using testing::search_scene;

search_scene two_cameras(const Eigen::Vector3d& turn) {
  return make_search_scene({{0, 0, 0}, turn}, {{0, 1}});
}

// The second camera's points are off by a fiftieth of a cell.
search_scene two_noisy_cameras() {
  search_scene scene = two_cameras({0.02, -0.03, 0.01});
  std::mt19937 noise(4);
  std::normal_distribution<double> shift(0, 0.02 * scene.scale);
  for (double& coordinate : scene.points[1].reshaped()) coordinate += shift(noise);
  scene.renew();
  return scene;
}

TEST(SearchWorkerCount, LeavesOneProcessorFreeAndTakesAtMostEight) {
  const std::string printed = testing::printed_by([] {
    EXPECT_EQ(search_worker_count(1), 1u);
    EXPECT_EQ(search_worker_count(2), 1u);
    EXPECT_EQ(search_worker_count(3), 2u);
    EXPECT_EQ(search_worker_count(9), 8u);
    EXPECT_EQ(search_worker_count(10), 8u);
    EXPECT_EQ(search_worker_count(128), 8u);
  });
  EXPECT_EQ(printed, "");
}

TEST(SearchWorkerCount, ComplainsAboutNoProcessorsAndTakesOne) {
  unsigned workers = 0;
  EXPECT_EQ(testing::printed_by([&] { workers = search_worker_count(0); }),
            "OS reported 0 for number of concurrent tasks!\n");
  EXPECT_EQ(workers, 1u);
}

TEST(WorkerShare, GivesTheRestToTheLastWorker) {
  EXPECT_EQ(worker_share(0, 1), 10000u);
  EXPECT_EQ(worker_share(0, 3), 3333u);
  EXPECT_EQ(worker_share(1, 3), 3333u);
  EXPECT_EQ(worker_share(2, 3), 3334u);
  EXPECT_EQ(worker_share(5, 7), 1428u);
  EXPECT_EQ(worker_share(6, 7), 1432u);
}

TEST(WorkerShare, SharesOutAllTrials) {
  for (unsigned workers = 1; workers <= 8; ++workers) {
    unsigned sum = 0;
    for (unsigned k = 0; k < workers; ++k) sum += worker_share(k, workers);
    EXPECT_EQ(sum, 10000u) << workers;
  }
}

TEST(WorkerRecord, IsSeededByOneDrawOfTheCLibrary) {
  std::srand(5);
  const auto first = static_cast<unsigned>(std::rand());
  const auto second = static_cast<unsigned>(std::rand());
  std::srand(5);
  const t_data records[2];
  EXPECT_EQ(records[0].generator, std::mt19937(first));
  EXPECT_EQ(records[1].generator, std::mt19937(second));
  EXPECT_EQ(records[0].error, -2);
  EXPECT_EQ(records[0].best_inliers, 0);
  EXPECT_EQ(records[0].best_error, 0);
}

TEST(SearchWorker, KeepsTheGuessOfMostInliers) {
  const search_scene scene = two_cameras({0.02, -0.03, 0.01});
  const search_inputs inputs = scene.inputs();
  t_data data;
  data.inputs = &inputs;
  data.trials = 20;
  EXPECT_EQ(search_worker(&data), 0u);
  EXPECT_EQ(data.error, 0);
  EXPECT_EQ(data.best_inliers, 12);
  EXPECT_TRUE(data.best_rotations[1].isApprox(scene.truth[1], 1e-12));
}

TEST(SearchWorker, KeepsTheSmallestErrorAmongAsManyInliers) {
  const search_scene scene = two_noisy_cameras();
  const search_inputs inputs = scene.inputs();
  t_data data;
  data.inputs = &inputs;
  data.trials = 100;
  std::mt19937 plain = data.generator;
  search_worker(&data);
  hypothesis best;
  int ties = 0;
  for (int trial = 0; trial < 100; ++trial) {
    const hypothesis guess = try_hypothesis(plain, inputs);
    if (!(guess.error < 0.5)) continue;
    ties += guess.inliers == best.inliers;
    if (guess.inliers > best.inliers ||
        (guess.inliers == best.inliers && guess.error < best.error)) {
      best = guess;
    }
  }
  EXPECT_GT(ties, 10);
  EXPECT_EQ(data.best_inliers, best.inliers);
  EXPECT_EQ(data.best_error, best.error);
  EXPECT_EQ(data.best_rotations, best.rotations);
}

TEST(SearchWorker, RefusesGuessesThatMoveTheCamerasTooFar) {
  // The second camera moves by d cells, the first one not: the error is d squared / 2.
  for (const double cells : {0.97, 1.03}) {
    const search_scene scene = two_cameras({0, 0, cells * 0.06});
    const search_inputs inputs = scene.inputs();
    t_data data;
    data.inputs = &inputs;
    data.trials = 20;
    search_worker(&data);
    EXPECT_EQ(data.error, 0);
    EXPECT_EQ(data.best_inliers, cells < 1 ? 12 : 0) << cells;
    EXPECT_EQ(data.best_rotations.empty(), cells > 1) << cells;
  }
}

TEST(SearchWorker, EndsAtTheFirstGuessWithAStatus) {
  search_scene scene = two_cameras({0, 0, 0});
  scene.graph.clear();
  const search_inputs inputs = scene.inputs();
  t_data data;
  data.inputs = &inputs;
  data.trials = 20;
  EXPECT_EQ(search_worker(&data), 0u);
  EXPECT_EQ(data.error, fixture_unusable);
}

TEST(SearchWorker, EndsWellWithoutATrial) {
  const search_scene scene = two_cameras({0, 0, 0});
  const search_inputs inputs = scene.inputs();
  t_data data;
  data.inputs = &inputs;
  search_worker(&data);
  EXPECT_EQ(data.error, 0);
}

TEST(RotationSearch, TakesTheBestOfAllWorkers) {
  const search_scene scene = two_noisy_cameras();
  const search_inputs inputs = scene.inputs();
  std::srand(3);
  t_data records[3];
  const t_data* best = nullptr;
  for (unsigned k = 0; k < 3; ++k) {
    records[k].inputs = &inputs;
    records[k].trials = worker_share(k, 3);
    search_worker(&records[k]);
    if (!best || records[k].best_inliers > best->best_inliers ||
        (records[k].best_inliers == best->best_inliers &&
         records[k].best_error < best->best_error)) {
      best = &records[k];
    }
  }
  std::srand(3);
  std::vector<Eigen::Matrix3d> rotations;
  EXPECT_EQ(rotation_search(rotations, inputs, 3), code::success);
  EXPECT_EQ(rotations, best->best_rotations);
}

TEST(RotationSearch, KeepsIdentitiesIfNoGuessWasAccepted) {
  const search_scene scene = two_cameras({0, 0, 0.2});
  std::vector<Eigen::Matrix3d> rotations;
  EXPECT_EQ(rotation_search(rotations, scene.inputs(), 1), code::success);
  EXPECT_EQ(rotations, std::vector<Eigen::Matrix3d>(2, Eigen::Matrix3d::Identity()));
}

TEST(RotationSearch, EndsOnASingleMatchWithIdentities) {
  search_scene scene = two_cameras({0, 0, 0.01});
  scene.matches.begin()->second.resize(1);
  scene.renew();
  std::vector<Eigen::Matrix3d> rotations;
  EXPECT_EQ(rotation_search(rotations, scene.inputs(), 2), code::success);
  EXPECT_EQ(rotations, std::vector<Eigen::Matrix3d>(2, Eigen::Matrix3d::Identity()));
}

TEST(RotationSearch, ComplainsAboutACameraOutOfReach) {
  search_scene scene = two_cameras({0, 0, 0});
  scene.graph.clear();
  std::vector<Eigen::Matrix3d> rotations;
  int result = 0;
  EXPECT_EQ(testing::printed_by([&] { result = rotation_search(rotations, scene.inputs(), 2); }),
            "Error detected!\n");
  EXPECT_EQ(result, fixture_unusable);
  EXPECT_EQ(rotations, std::vector<Eigen::Matrix3d>(2, Eigen::Matrix3d::Identity()));
}

#ifdef __GLIBC__
TEST(RotationSearch, TakesAWorkerThatNeverStartedForAFailure) {
  const search_scene scene = two_cameras({0, 0, 0});
  std::vector<Eigen::Matrix3d> rotations;
  int result = 0;
  const testing::no_new_threads none;
  EXPECT_EQ(testing::printed_by([&] { result = rotation_search(rotations, scene.inputs(), 2); }),
            "Error detected!\n");
  EXPECT_EQ(result, -2);
}
#endif

}  // namespace
}  // namespace ocpan
