#include "tools/verify/coverage.h"

#include <algorithm>

namespace ocpan {
namespace {

enum class state : std::uint8_t { covered, hole, unseen };

state state_of(std::size_t sample, const std::vector<camera_reach>& cameras) {
  state found = state::unseen;
  for (const camera_reach& camera : cameras) {
    if (camera.weight[sample]) return state::covered;
    if (camera.seen[sample]) found = state::hole;
  }
  return found;
}

coverage_hole hole_of(const std::vector<std::size_t>& members,
                      const std::vector<cube_sample>& samples,
                      const std::vector<camera_reach>& cameras) {
  coverage_hole hole;
  Eigen::Vector3d sum = Eigen::Vector3d::Zero();
  for (const std::size_t i : members) {
    hole.solid_angle += samples[i].solid_angle;
    sum += samples[i].solid_angle * samples[i].direction;
  }
  hole.middle = look_angles_of(sum);
  for (std::size_t camera = 0; camera < cameras.size(); ++camera) {
    const bool sees = std::any_of(members.begin(), members.end(),
                                  [&](std::size_t i) { return cameras[camera].seen[i] != 0; });
    if (sees) hole.seen_by.push_back(camera);
  }
  return hole;
}

}  // namespace

sphere_coverage coverage_of(const std::vector<cube_sample>& samples, const cube_places& places,
                            const std::vector<camera_reach>& cameras) {
  sphere_coverage coverage;
  coverage.of_cameras.assign(cameras.size(), 0);
  std::vector<state> states(samples.size());
  for (std::size_t i = 0; i < samples.size(); ++i) {
    states[i] = state_of(i, cameras);
    if (states[i] == state::covered) coverage.together += samples[i].solid_angle;
    if (states[i] == state::unseen) coverage.unseen += samples[i].solid_angle;
    for (std::size_t camera = 0; camera < cameras.size(); ++camera) {
      if (cameras[camera].weight[i]) coverage.of_cameras[camera] += samples[i].solid_angle;
    }
  }
  for (std::size_t start = 0; start < samples.size(); ++start) {
    if (states[start] != state::hole) continue;
    std::vector<std::size_t> members{start};
    states[start] = state::covered;  // taken
    for (std::size_t done = 0; done < members.size(); ++done) {
      for (const std::size_t next : places.next_to(members[done])) {
        if (states[next] != state::hole) continue;
        states[next] = state::covered;
        members.push_back(next);
      }
    }
    coverage.holes.push_back(hole_of(members, samples, cameras));
  }
  std::sort(coverage.holes.begin(), coverage.holes.end(),
            [](const coverage_hole& left, const coverage_hole& right) {
              return left.solid_angle > right.solid_angle;
            });
  return coverage;
}

}  // namespace ocpan
