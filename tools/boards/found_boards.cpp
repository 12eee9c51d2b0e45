#include "tools/boards/found_boards.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <mutex>
#include <utility>

#include <opencv2/core/mat.hpp>

#include "calibration/board_corners.h"
#include "calibration/read_image.h"
#include "platform/processors.h"
#include "platform/text_file.h"
#include "tools/boards/corner_file.h"
#include "tools/boards/jpeg_end.h"

namespace ocpan {
namespace {

corner_search search_of(const cal_frame_set& set, std::size_t camera, std::size_t frame) {
  const camera_details& details = set.details[set.camera_indices[camera]];
  return {set.set_cameras[camera].files[frame], details.width, details.height, set.board_width,
          set.board_height};
}

bool is_cut_short(const std::string& file) {
  std::ifstream in = open_input(file, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(in), {}};
  return is_jpeg_cut_short(bytes);
}

picture_finding look_at(const corner_search& search) {
  picture_finding finding;
  finding.cut_short = is_cut_short(search.file);
  cv::Mat grey;
  if (!decode_grey(grey, search.file.c_str())) return finding;
  finding.width = grey.cols;
  finding.height = grey.rows;
  if (grey.cols != search.width || grey.rows != search.height) {
    finding.state = picture_state::wrong_size;
    return finding;
  }
  std::vector<cv::Point2f> corners;
  const cv::Size board(search.board_width, search.board_height);
  const bool found = find_board_corners(corners, grey, board, board_search::quick);
  finding.state = found ? picture_state::found : picture_state::not_found;
  if (found) finding.corners = corner_matrix(corners);
  return finding;
}

// Every search of the run once, in no order of the sets.
kept_findings all_searches(const rig_pictures& pictures) {
  kept_findings searches;
  for (const cal_frame_set& set : pictures.sets) {
    for (std::size_t frame = 0; frame < frame_count(set); ++frame) {
      for (std::size_t camera = 0; camera < set.set_cameras.size(); ++camera) {
        searches.emplace(search_of(set, camera, frame), kept_finding{});
      }
    }
  }
  return searches;
}

// Fills in what was kept of pictures that are as they were; gives the searches that are left.
std::vector<kept_findings::iterator> take_kept(kept_findings& searches, const kept_findings& kept) {
  std::vector<kept_findings::iterator> open;
  for (auto it = searches.begin(); it != searches.end(); ++it) {
    it->second.stamp = stamp_of(it->first.file);
    const auto known = kept.find(it->first);
    const bool fresh = known != kept.end() && it->second.stamp.bytes >= 0 &&
                       known->second.stamp == it->second.stamp;
    if (fresh) {
      it->second.finding = known->second.finding;
    } else {
      open.push_back(it);
    }
  }
  return open;
}

void look_for_all(const std::vector<kept_findings::iterator>& open, std::size_t total,
                  const std::function<void(int, int)>& progress) {
  std::atomic<std::size_t> next{0};
  std::mutex telling;
  std::size_t done = total - open.size();
  const auto tell = [&](std::size_t more) {
    const std::lock_guard<std::mutex> lock(telling);
    done += more;
    if (progress) progress(static_cast<int>(done), static_cast<int>(total));
  };
  tell(0);
  const auto work = [&](std::size_t) {
    for (std::size_t k = next++; k < open.size(); k = next++) {
      open[k]->second.finding = look_at(open[k]->first);
      tell(1);
    }
  };
  const std::size_t workers = std::min<std::size_t>(std::max(processor_count(), 1u), open.size());
  if (workers > 1 && run_workers(workers, work) && next >= open.size()) return;
  work(0);
}

}  // namespace

std::string corner_file_name(const std::string& output_file) {
  return output_file + "_corners.json";
}

found_boards find_boards(const rig_pictures& pictures,
                         const std::function<void(int done, int total)>& progress,
                         std::vector<std::string>& warnings) {
  const std::string corner_file = corner_file_name(pictures.output_file);
  std::string warning;
  const bool keeps = !pictures.output_file.empty();
  const kept_findings kept = keeps ? read_corner_file(corner_file, warning) : kept_findings{};
  kept_findings searches = all_searches(pictures);
  const auto open = take_kept(searches, kept);
  look_for_all(open, searches.size(), progress);
  if (!warning.empty()) warnings.push_back(std::exchange(warning, {}));
  if (keeps && (!open.empty() || searches.size() != kept.size())) {
    write_corner_file(corner_file, searches, warning);
    if (!warning.empty()) warnings.push_back(warning);
  }

  found_boards boards;
  for (const cal_frame_set& set : pictures.sets) {
    auto& frames = boards.emplace_back(frame_count(set));
    for (std::size_t frame = 0; frame < frames.size(); ++frame) {
      for (std::size_t camera = 0; camera < set.set_cameras.size(); ++camera) {
        frames[frame].push_back(searches.at(search_of(set, camera, frame)).finding);
      }
    }
  }
  return boards;
}

board_frames frames_of(const found_boards& boards) {
  board_frames frames;
  for (const auto& set : boards) {
    auto& set_frames = frames.emplace_back();
    for (const auto& frame : set) {
      frame_views& views = set_frames.emplace_back();
      for (const picture_finding& finding : frame) {
        views.push_back({finding.state == picture_state::found, finding.corners});
      }
    }
  }
  return frames;
}

}  // namespace ocpan
