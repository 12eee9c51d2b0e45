#include "tools/evaluate/frame_parts.h"

#include <algorithm>
#include <map>
#include <string>

namespace ocpan {
namespace {

constexpr std::size_t no_moment = static_cast<std::size_t>(-1);

// Replaces a number by another in all frames.
void rename(frame_numbers& numbers, std::size_t from, std::size_t to) {
  for (std::vector<std::size_t>& set : numbers) std::replace(set.begin(), set.end(), from, to);
}

// Numbers without gaps, in order of their first frames.
void close_gaps(frame_numbers& numbers) {
  std::map<std::size_t, std::size_t> closed;
  for (std::vector<std::size_t>& set : numbers) {
    for (std::size_t& number : set)
      number = closed.try_emplace(number, closed.size()).first->second;
  }
}

}  // namespace

frame_numbers moments_of(const rig_pictures& pictures) {
  frame_numbers moments;
  std::map<std::string, std::size_t> of_picture;
  std::size_t next = 0;
  for (const cal_frame_set& set : pictures.sets) {
    moments.emplace_back();
    for (std::size_t frame = 0; frame < frame_count(set); ++frame) {
      std::size_t moment = no_moment;
      for (const set_camera& camera : set.set_cameras) {
        const auto known = of_picture.find(camera.files[frame]);
        if (known == of_picture.end() || known->second == moment) continue;
        if (moment == no_moment) {
          moment = known->second;
          continue;
        }
        const std::size_t joining = known->second;
        rename(moments, joining, moment);
        for (auto& [picture, of] : of_picture) {
          if (of == joining) of = moment;
        }
      }
      if (moment == no_moment) moment = next++;
      for (const set_camera& camera : set.set_cameras) of_picture[camera.files[frame]] = moment;
      moments.back().push_back(moment);
    }
  }
  close_gaps(moments);
  return moments;
}

std::size_t moment_count(const rig_pictures& pictures) {
  std::size_t count = 0;
  for (const std::vector<std::size_t>& set : moments_of(pictures)) {
    for (const std::size_t moment : set) count = std::max(count, moment + 1);
  }
  return count;
}

frame_numbers dealt_frames(const rig_pictures& pictures, std::size_t parts) {
  frame_numbers numbers = moments_of(pictures);
  std::map<std::size_t, std::vector<std::size_t>> sets_of;  // by moment, a set for each frame
  for (std::size_t s = 0; s < numbers.size(); ++s) {
    for (const std::size_t moment : numbers[s]) sets_of[moment].push_back(s);
  }
  // What every set has given to every part so far.
  std::vector<std::vector<std::size_t>> given(numbers.size(), std::vector<std::size_t>(parts, 0));
  std::vector<std::size_t> total(parts, 0);
  std::vector<std::size_t> part_of(sets_of.size());
  for (const auto& [moment, sets] : sets_of) {
    std::size_t best = 0;
    std::pair<std::size_t, std::size_t> least;
    for (std::size_t part = 0; part < parts; ++part) {
      std::pair<std::size_t, std::size_t> load{0, total[part]};
      for (const std::size_t s : sets) load.first += given[s][part];
      if (part == 0 || load < least) {
        best = part;
        least = load;
      }
    }
    part_of[moment] = best;
    total[best] += sets.size();
    for (const std::size_t s : sets) ++given[s][best];
  }
  for (std::vector<std::size_t>& set : numbers) {
    for (std::size_t& number : set) number = part_of[number];
  }
  return numbers;
}

}  // namespace ocpan
