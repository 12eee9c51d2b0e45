#pragma once

#include <cstddef>
#include <vector>

#include <Eigen/Core>

#include "model/parameters.h"
#include "model/pose.h"
#include "src/camera_details.h"
#include "tools/boards/seen_boards.h"

namespace ocpan {

// How far the middle of a board stands out of the plane of its corners: along its width and
// along its height, unit of board_scale. With u and v from -1 to 1 over the corners, a point
// stands out by along_width (1 - u^2) + along_height (1 - v^2).
struct board_bend {
  double along_width = 0;
  double along_height = 0;
};

enum class bend_choice { flat, bent, if_borne };

struct adjust_options {
  double tie = 0;  // how strongly lenses of a kind are held alike; 0 not at all
  bend_choice bend = bend_choice::flat;
  // Leaves the rig as it is where the boards don't tell it from the refined one: where the
  // cost falls by less than the numbers that move would make it fall by themselves, twice
  // (Akaike, A new look at the statistical model identification, 1974). Boards that weren't
  // used would fit the refined rig worse then.
  bool only_if_better = false;
};

// How one seen board fits. The lists stand side by side with the board's cameras.
struct board_fit {
  ModelPose pose;                           // board -> rig
  std::vector<Eigen::Matrix2Xd> residuals;  // observed less projected, pixels
  std::vector<Eigen::ArrayXd> weights;      // per corner, 1 for one that fits, less for others
  std::vector<bool> set_aside;              // views that fit so badly that they played no part
};

// A rig and how well boards fit it.
struct adjusted_rig {
  rig models;
  std::vector<board_fit> boards;      // side by side with the seen boards
  std::vector<std::size_t> physical;  // per seen board, which physical board it is
  std::vector<board_bend> bends;      // per physical board; 0 where boards are flat
  double sigma = 0;                   // noise of a corner's coordinate, pixels, from the data
  double cost = 0;                    // loss in units of sigma squared, priors with it
  int iterations = 0;                 // steps taken
  bool converged = false;
  bool kept = false;           // the rig was left as it is
  Eigen::MatrixXd covariance;  // of the cameras' increments, see increment_layout
};

// Boards with the same corners in the same places count as one physical board, for a user has
// one board or a few of different kinds.
//
// Refines all lenses, the places of all cameras and all boards together until nothing falls
// any more (Triggs et al., Bundle Adjustment - A Modern Synthesis, 2000). Camera 0 keeps its
// centre, its axis A and the direction of H across A: that is the rig's frame. A robust loss
// whose scale comes from the data takes the pull from corners that don't fit; a view none of
// whose corners fit is set aside. rho_0 comes back as 0: H and V say the same.
//
//   models    the calibration to start from
//   details   of the same cameras
//   boards    what was seen
adjusted_rig adjust_rig(const rig& models, const std::vector<camera_details>& details,
                        const std::vector<seen_board>& boards, const adjust_options& options);

// The same measures of a rig that stays as it is: each board is laid where it fits best.
//
//   bends   per physical board; empty for flat ones
adjusted_rig measure_rig(const rig& models, const std::vector<camera_details>& details,
                         const std::vector<seen_board>& boards,
                         const std::vector<board_bend>& bends);

}  // namespace ocpan
