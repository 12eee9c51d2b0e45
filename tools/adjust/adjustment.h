#pragma once

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include <Eigen/Core>

#include "tools/adjust/adjust_rig.h"
#include "tools/adjust/board_shape.h"
#include "tools/adjust/camera_increments.h"
#include "tools/adjust/view_equations.h"

namespace ocpan {

// What an adjustment moves. A trial is a new state.
struct adjustment_state {
  std::vector<camera_state> cameras;
  std::vector<board_place> places;  // per seen board
  std::vector<board_bend> bends;    // per physical board
};

// One soft row: a sum of increments that is held near a value. Both are in units of its
// standard deviation.
struct soft_row {
  std::vector<std::pair<Eigen::Index, double>> derivatives;  // column and derivative
  double residual = 0;                                       // target less value
};

// What an adjustment works on. Holds the boards by reference.
struct adjustment_problem {
  const std::vector<seen_board>& boards;
  std::vector<camera_details> details;
  physical_boards physical;
  adjustment_state start = {};  // where the priors are centred
  double typical_distance = 1;
  double tie = 0;
  bool bent = false;
  bool fixed_rig = false;                         // only the boards' places move
  std::vector<std::vector<bool>> set_aside = {};  // per seen board and view
  double sigma = 1;
  // Per camera the corner farthest from the picture's middle, to which its lens has to reach
  // without folding back; nothing if it didn't at the start.
  std::vector<std::optional<Eigen::Vector2d>> reach = {};

  Eigen::Index camera_columns() const { return increment_layout::size(details.size()); }
  Eigen::Index bend_first(std::size_t physical_board) const {
    return camera_columns() + 2 * static_cast<Eigen::Index>(physical_board);
  }
  Eigen::Index shared_columns() const {
    return bent ? bend_first(physical.shapes.size()) : camera_columns();
  }
};

// Whether any view of a board counts.
bool counts(const adjustment_problem& problem, std::size_t board);

// Where a board's columns meet those of all boards in common.
struct shared_block {
  Eigen::Index first;  // column
  Eigen::Matrix<double, Eigen::Dynamic, place_columns, 0, increments_per_camera, place_columns>
      by_place;
};

struct board_equations {
  Eigen::Matrix<double, place_columns, place_columns> place;
  Eigen::Matrix<double, place_columns, 1> gradient;
  std::vector<shared_block> shared;
};

// The problem linearised at a state.
struct adjustment_equations {
  Eigen::MatrixXd shared;               // of the cameras' increments, then the bends
  Eigen::VectorXd gradient;             // of the same
  std::vector<board_equations> boards;  // side by side with the seen boards
  double cost = 0;
};
adjustment_equations linearise(const adjustment_problem& problem, const adjustment_state& state,
                               view_room& room);

// Whether every lens reaches its farthest corner.
bool lenses_reach(const adjustment_problem& problem, const adjustment_state& state);

// A step of everything that moves.
struct adjustment_step {
  Eigen::VectorXd shared;
  std::vector<Eigen::Matrix<double, place_columns, 1>> places;
};

// The shared part with the boards' places eliminated (Schur's complement), each diagonal
// entry raised by the damping's share of itself.
struct reduced_equations {
  Eigen::MatrixXd shared;
  Eigen::VectorXd gradient;
};
reduced_equations reduce(const adjustment_problem& problem, const adjustment_equations& at,
                         double damping);
adjustment_step solve(const adjustment_problem& problem, const adjustment_equations& at,
                      double damping);

adjustment_state moved(const adjustment_problem& problem, const adjustment_state& state,
                       const adjustment_step& step);

// Levenberg and Marquardt's steps until the cost doesn't fall any more.
struct minimum {
  adjustment_state state;
  double cost = 0;
  int iterations = 0;  // steps taken
  bool converged = false;
};
minimum minimise(const adjustment_problem& problem, const adjustment_state& start);

}  // namespace ocpan
