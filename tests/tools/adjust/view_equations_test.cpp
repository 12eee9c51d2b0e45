#include "tools/adjust/view_equations.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "model/projection.h"
#include "simulator/compare_rigs.h"
#include "tests/tools/adjust/simulated_boards.h"

namespace ocpan {
namespace {

using Eigen::Index;
using testing::simulate_preset;
using testing::simulated_boards;

// A camera, a bent board before it, and a step of both.
struct view_scene {
  camera_state camera;
  board_place place;
  board_shape shape;
  board_bend bend{0.7, -0.4};

  Eigen::VectorXd projected() const {
    view_room room;
    const Eigen::Matrix2Xd origin = Eigen::Matrix2Xd::Zero(2, shape.points.cols());
    view_rows(room, camera, place, shape, bend, origin);
    return -room.rows.col(residual_at);
  }
  view_scene stepped(int column, double size) const {
    view_scene next = *this;
    if (column < place_at) {
      next.camera = moved(camera, size * increment_vector::Unit(column));
    } else if (column < bend_at) {
      next.place =
          moved(place, size * Eigen::Matrix<double, place_columns, 1>::Unit(column - place_at));
    } else {
      (column == bend_at ? next.bend.along_width : next.bend.along_height) += size;
    }
    return next;
  }
};

view_scene scene_of(const std::string& preset, std::size_t camera) {
  const simulated_boards simulated = simulate_preset(preset, 0, 1);
  const std::vector<seen_board> boards = testing::seen_boards_of(simulated);
  const auto seen = std::find_if(boards.begin(), boards.end(), [&](const seen_board& board) {
    return board.cameras.front() == camera;
  });
  view_scene scene{split_camera(simulated.truth()[camera]),
                   place_of(simulated.poses[seen->set][seen->frame]),
                   tell_boards_apart(boards).shapes.front()};
  increment_vector off = increment_vector::Zero();
  off[skew] = 2;
  off[radial_1] = 0.01;
  off[radial_2] = -0.003;
  scene.camera = moved(scene.camera, off);
  return scene;
}

// Central differences, each column judged by its own largest entry.
void expect_derivatives(const view_scene& scene) {
  view_room room;
  const Eigen::Matrix2Xd origin = Eigen::Matrix2Xd::Zero(2, scene.shape.points.cols());
  view_rows(room, scene.camera, scene.place, scene.shape, scene.bend, origin);
  int checked = 0;
  for (int column = 0; column < residual_at; ++column) {
    const double step = 1e-5;
    const Eigen::VectorXd numeric =
        (scene.stepped(column, step).projected() - scene.stepped(column, -step).projected()) /
        (2 * step);
    const Eigen::VectorXd exact = room.rows.col(column);
    const double largest = exact.lpNorm<Eigen::Infinity>();
    EXPECT_GT(largest, 0) << "column " << column;
    EXPECT_LT((numeric - exact).lpNorm<Eigen::Infinity>(), 1e-6 * std::max(largest, 1e-3))
        << "column " << column;
    ++checked;
  }
  EXPECT_EQ(checked, 24);
}

TEST(ViewRows, HoldTheDerivativesOfARectilinearCamera) {
  expect_derivatives(scene_of("2-lens0-unlike", 1));
}

TEST(ViewRows, HoldTheDerivativesOfAFisheyeThatLooksBackwards) {
  expect_derivatives(scene_of("4-lens1-unlike", 2));
}

// The axis of camera 0 is the pole of its angles.
TEST(ViewRows, HoldTheDerivativesAtThePole) { expect_derivatives(scene_of("4-lens1", 0)); }

TEST(ViewRows, ProjectAsTheModelDoes) {
  const simulated_boards simulated = simulate_preset("4-lens1-unlike", 0, 1);
  const seen_board board = testing::seen_boards_of(simulated).front();
  view_room room;
  view_rows(room, split_camera(simulated.truth()[0]), place_of(simulated.poses[0][0]),
            tell_boards_apart({board}).shapes[0], {}, board.corners[0]);
  EXPECT_LT(room.rows.col(residual_at).lpNorm<Eigen::Infinity>(), 1e-9);
}

TEST(AddUpView, WeighsACornerThatIsNoNumberAsNothing) {
  const view_scene scene = scene_of("2-lens0-unlike", 1);
  Eigen::Matrix2Xd corners = scene.projected().reshaped(2, scene.shape.points.cols());
  corners(0, 3) = std::nan("");
  view_room room;
  view_rows(room, scene.camera, scene.place, scene.shape, scene.bend, corners);
  view_products products;
  EXPECT_GT(add_up_view(products, room, 0.1), 100);
  EXPECT_TRUE(products.allFinite());
  EXPECT_LT(products(residual_at, residual_at), 1e-12);
}

}  // namespace
}  // namespace ocpan
