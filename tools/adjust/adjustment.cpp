#include "tools/adjust/adjustment.h"

#include <algorithm>
#include <cmath>

#include <Eigen/Cholesky>

#include "tools/adjust/lens_reach.h"
#include "tools/adjust/soft_rows.h"

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;
using place_matrix = Eigen::Matrix<double, place_columns, place_columns>;

constexpr int most_steps = 200;
constexpr double first_damping = 1e-4;
constexpr double most_damping = 1e10;
constexpr double least_fall = 1e-7;  // of the cost, which counts squares of sigma

// Adds the part of a view's products that starts at `at` and has `size` columns to the
// shared equations, and what couples it to the board's place to the board's.
void add_shared(adjustment_equations& equations, board_equations& board,
                const view_products& products, int at, int size, Index first) {
  equations.shared.block(first, first, size, size) += products.block(at, at, size, size);
  equations.gradient.segment(first, size) += products.block(at, residual_at, size, 1);
  const auto known = std::find_if(board.shared.begin(), board.shared.end(),
                                  [&](const shared_block& block) { return block.first == first; });
  if (known != board.shared.end()) {
    known->by_place += products.block(at, place_at, size, place_columns);
  } else {
    board.shared.push_back({first, products.block(at, place_at, size, place_columns)});
  }
}

void add_view(adjustment_equations& equations, board_equations& board,
              const adjustment_problem& problem, const view_products& products, std::size_t camera,
              std::size_t physical) {
  board.place += products.block<place_columns, place_columns>(place_at, place_at);
  board.gradient += products.block<place_columns, 1>(place_at, residual_at);
  if (problem.fixed_rig) return;
  const int skipped = increment_layout::left_out(camera);
  const int own = increments_per_camera - skipped;
  const Index first = increment_layout::first(camera);
  add_shared(equations, board, products, skipped, own, first);
  if (!problem.bent) return;
  const Index bend = problem.bend_first(physical);
  add_shared(equations, board, products, bend_at, 2, bend);
  const MatrixXd cross = products.block(skipped, bend_at, own, 2);
  equations.shared.block(first, bend, own, 2) += cross;
  equations.shared.block(bend, first, 2, own) += cross.transpose();
}

void add_soft_rows(adjustment_equations& equations, const std::vector<soft_row>& rows) {
  for (const soft_row& row : rows) {
    equations.cost += row.residual * row.residual;
    for (const auto& [i, by_i] : row.derivatives) {
      equations.gradient[i] += by_i * row.residual;
      for (const auto& [j, by_j] : row.derivatives) equations.shared(i, j) += by_i * by_j;
    }
  }
}

place_matrix damped(const place_matrix& matrix, double damping) {
  place_matrix result = matrix;
  result.diagonal() *= 1 + damping;
  return result;
}

bool all_finite(const adjustment_step& step) {
  return step.shared.allFinite() &&
         std::all_of(step.places.begin(), step.places.end(),
                     [](const auto& place) { return place.allFinite(); });
}

}  // namespace

bool counts(const adjustment_problem& problem, std::size_t board) {
  const std::vector<bool>& aside = problem.set_aside[board];
  return std::find(aside.begin(), aside.end(), false) != aside.end();
}

adjustment_equations linearise(const adjustment_problem& problem, const adjustment_state& state,
                               view_room& room) {
  adjustment_equations equations;
  const Index columns = problem.fixed_rig ? 0 : problem.shared_columns();
  equations.shared = MatrixXd::Zero(columns, columns);
  equations.gradient = VectorXd::Zero(columns);
  view_products products;
  for (std::size_t b = 0; b < problem.boards.size(); ++b) {
    const seen_board& seen = problem.boards[b];
    const std::size_t physical = problem.physical.of_seen[b];
    board_equations& board = equations.boards.emplace_back();
    board.place.setZero();
    board.gradient.setZero();
    for (std::size_t v = 0; v < seen.cameras.size(); ++v) {
      if (problem.set_aside[b][v]) continue;
      view_rows(room, state.cameras[seen.cameras[v]], state.places[b],
                problem.physical.shapes[physical], state.bends[physical], seen.corners[v]);
      equations.cost += add_up_view(products, room, problem.sigma);
      add_view(equations, board, problem, products, seen.cameras[v], physical);
    }
  }
  if (!problem.fixed_rig) add_soft_rows(equations, soft_rows(problem, state));
  return equations;
}

bool lenses_reach(const adjustment_problem& problem, const adjustment_state& state) {
  for (std::size_t c = 0; c < problem.reach.size(); ++c) {
    if (problem.reach[c] && !lens_reaches(state.cameras[c].lens, *problem.reach[c])) return false;
  }
  return true;
}

reduced_equations reduce(const adjustment_problem& problem, const adjustment_equations& at,
                         double damping) {
  reduced_equations reduced{at.shared, at.gradient};
  reduced.shared.diagonal() *= 1 + damping;
  for (std::size_t b = 0; b < at.boards.size(); ++b) {
    if (!counts(problem, b)) continue;
    const board_equations& board = at.boards[b];
    const Eigen::LLT<place_matrix> place(damped(board.place, damping));
    const Eigen::Matrix<double, place_columns, 1> from_place = place.solve(board.gradient);
    for (const shared_block& block : board.shared) {
      const Eigen::Matrix<double, place_columns, Eigen::Dynamic, 0, place_columns,
                          increments_per_camera>
          eliminated = place.solve(block.by_place.transpose());
      reduced.gradient.segment(block.first, block.by_place.rows()) -= block.by_place * from_place;
      for (const shared_block& other : board.shared) {
        reduced.shared.block(other.first, block.first, other.by_place.rows(),
                             block.by_place.rows()) -= other.by_place * eliminated;
      }
    }
  }
  return reduced;
}

adjustment_step solve(const adjustment_problem& problem, const adjustment_equations& at,
                      double damping) {
  adjustment_step step;
  const reduced_equations reduced = reduce(problem, at, damping);
  step.shared = reduced.shared.ldlt().solve(reduced.gradient);
  for (std::size_t b = 0; b < at.boards.size(); ++b) {
    auto& place = step.places.emplace_back();
    place.setZero();
    if (!counts(problem, b)) continue;
    const board_equations& board = at.boards[b];
    Eigen::Matrix<double, place_columns, 1> gradient = board.gradient;
    for (const shared_block& block : board.shared) {
      gradient -=
          block.by_place.transpose() * step.shared.segment(block.first, block.by_place.rows());
    }
    place = damped(board.place, damping).llt().solve(gradient);
  }
  return step;
}

adjustment_state moved(const adjustment_problem& problem, const adjustment_state& state,
                       const adjustment_step& step) {
  adjustment_state next = state;
  for (std::size_t b = 0; b < next.places.size(); ++b) {
    next.places[b] = moved(state.places[b], step.places[b]);
  }
  if (problem.fixed_rig) return next;
  for (std::size_t c = 0; c < next.cameras.size(); ++c) {
    const int skipped = increment_layout::left_out(c);
    increment_vector increments = increment_vector::Zero();
    increments.tail(increments_per_camera - skipped) =
        step.shared.segment(increment_layout::first(c), increments_per_camera - skipped);
    next.cameras[c] = moved(state.cameras[c], increments);
  }
  if (!problem.bent) return next;
  for (std::size_t p = 0; p < next.bends.size(); ++p) {
    next.bends[p].along_width += step.shared[problem.bend_first(p)];
    next.bends[p].along_height += step.shared[problem.bend_first(p) + 1];
  }
  return next;
}

minimum minimise(const adjustment_problem& problem, const adjustment_state& start) {
  view_room room;
  minimum at{start, 0, 0, false};
  adjustment_equations equations = linearise(problem, start, room);
  double damping = first_damping;
  while (at.iterations < most_steps && damping < most_damping) {
    const adjustment_step step = solve(problem, equations, damping);
    adjustment_state trial = moved(problem, at.state, step);
    if (all_finite(step) && lenses_reach(problem, trial)) {
      adjustment_equations there = linearise(problem, trial, room);
      const double fall = equations.cost - there.cost;
      if (std::abs(fall) < least_fall) at.converged = true;
      if (fall > 0) {
        at.state = std::move(trial);
        equations = std::move(there);
        ++at.iterations;
        damping = std::max(damping * 0.1, 1e-12);
      }
      if (at.converged) break;
      if (fall > 0) continue;
    }
    damping *= 10;
  }
  at.cost = equations.cost;
  return at;
}

}  // namespace ocpan
