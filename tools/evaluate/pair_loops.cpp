#include "tools/evaluate/pair_loops.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <optional>

#include "tools/evaluate/rigid_motion.h"

namespace ocpan {
namespace {

constexpr std::size_t nowhere = std::numeric_limits<std::size_t>::max();

using pair_list = std::vector<const evaluated_pair*>;

// The cameras on the shortest way between two cameras over some pairs; none if there is no
// way.
std::vector<std::size_t> way_between(std::size_t from, std::size_t to, std::size_t cameras,
                                     const pair_list& pairs) {
  std::vector<std::size_t> back(cameras, nowhere);
  back[from] = from;
  std::deque<std::size_t> waiting = {from};
  while (!waiting.empty() && back[to] == nowhere) {
    const std::size_t at = waiting.front();
    waiting.pop_front();
    for (const evaluated_pair* pair : pairs) {
      if (pair->first != at && pair->second != at) continue;
      const std::size_t next = pair->first == at ? pair->second : pair->first;
      if (back[next] != nowhere) continue;
      back[next] = at;
      waiting.push_back(next);
    }
  }
  if (back[to] == nowhere) return {};
  std::vector<std::size_t> way = {to};
  while (way.back() != from) way.push_back(back[way.back()]);
  return way;
}

const evaluated_pair& pair_of(const pair_list& pairs, std::size_t a, std::size_t b) {
  return **std::find_if(pairs.begin(), pairs.end(), [&](const evaluated_pair* pair) {
    return pair->first == std::min(a, b) && pair->second == std::max(a, b);
  });
}

// Where something is when camera `from` stands where the calibration has it, by where it is
// when camera `to` does.
rigid_motion link(const evaluated_pair& pair, std::size_t from) {
  const rigid_motion seen = {pair.own->rotation, pair.own->translation};
  return pair.first == from ? inverse_of(seen) : seen;
}

pair_loop walked(const rig& models, const pair_list& pairs,
                 const std::vector<std::size_t>& cameras) {
  pair_loop loop{cameras, 0, 0, 0, 0, verdict::good};
  const Eigen::Vector3d start = vector_of(models[cameras.front()], C_0);
  rigid_motion round;
  double turn_variance = 0, shift_variance = 0;
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    const std::size_t from = cameras[i];
    const std::size_t to = cameras[(i + 1) % cameras.size()];
    const evaluated_pair& pair = pair_of(pairs, from, to);
    round = round * link(pair, from);
    const double turn = pair.own->turn_deviation_degrees;
    turn_variance += turn * turn;
    // A turn at the pair's second camera swings the first one; of a turn about any axis two
    // thirds of the variance lie across the arm.
    const double arm = (vector_of(models[pair.second], C_0) - start).norm();
    const double swing = arm * turn * pi / 180;
    shift_variance += pair.own->shift_deviation * pair.own->shift_deviation + swing * swing * 2 / 3;
  }
  loop.turn_degrees = turn_degrees(round.rotation);
  loop.shift = (round * start - start).norm();
  loop.turn_deviation_degrees = std::sqrt(turn_variance);
  loop.shift_deviation = std::sqrt(shift_variance);
  return loop;
}

}  // namespace

std::vector<pair_loop> pair_loops(const rig& models, const std::vector<evaluated_pair>& pairs) {
  std::vector<pair_loop> loops;
  pair_list before;  // the pairs so far: one whose cameras they link already closes a loop
  pair_list all;
  for (const evaluated_pair& pair : pairs) {
    if (pair.own) all.push_back(&pair);
  }
  for (const evaluated_pair* pair : all) {
    std::vector<std::size_t> cameras =
        way_between(pair->first, pair->second, models.size(), before);
    before.push_back(pair);
    if (cameras.empty()) continue;
    // From the camera with the least number on.
    std::rotate(cameras.begin(), std::min_element(cameras.begin(), cameras.end()), cameras.end());
    if (cameras.back() < cameras[1]) std::reverse(cameras.begin() + 1, cameras.end());
    loops.push_back(walked(models, all, cameras));
  }
  return loops;
}

std::vector<std::size_t> linked_parts(std::size_t cameras,
                                      const std::vector<evaluated_pair>& pairs) {
  pair_list all;
  for (const evaluated_pair& pair : pairs) all.push_back(&pair);
  std::vector<std::size_t> parts(cameras, nowhere);
  std::size_t count = 0;
  for (std::size_t c = 0; c < cameras; ++c) {
    if (parts[c] != nowhere) continue;
    for (std::size_t d = c; d < cameras; ++d) {
      if (!way_between(c, d, cameras, all).empty()) parts[d] = count;
    }
    ++count;
  }
  return parts;
}

}  // namespace ocpan
