#include "tools/evaluate/calibrated_pictures.h"

#include <algorithm>
#include <iostream>
#include <sstream>

#include "calfiles/selen360_cal_file.h"
#include "include/oc_pan_cal.h"
#include "platform/terminal.h"
#include "platform/text_file.h"
#include "src/result_codes.h"
#include "tools/boards/printed_aside.h"
#include "tools/calibration_check.h"
#include "tools/messages.h"
#include "tools/progress_bar.h"

namespace ocpan {
namespace {

// Tells what the library said about an input, line by line.
void pass_on(const std::string& said) {
  std::istringstream lines(said);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty()) complain("the library said: ", line);
  }
}

int read_calibration(calibrated_pictures& out, const std::string& path) {
  selen360_cal_file file(1);  // no radius plays a part
  int result = code::success;
  const std::string said = printed_aside([&] { result = file.load(path.c_str()); });
  if (result != code::success) {
    pass_on(said);
    complain(path,
             " can't be used; name a calibration file as oc_pan cal or oc_pan refine"
             " writes it");
    return map_result(result);
  }
  if (const std::string token = number_that_is_none(path, false); !token.empty()) {
    complain(path, " holds no number where one belongs: ", token, "; calibrate anew");
    return OCPAN_MALFORMED;
  }
  if (file.models().empty() || file.models().size() != file.details().size()) {
    complain(path, " tells the pictures of ", file.details().size(), " cameras and the models of ",
             file.models().size(), "; name a calibration file as oc_pan cal writes it");
    return OCPAN_MALFORMED;
  }
  out.models = file.models();
  out.details = file.details();
  return OCPAN_SUCCESS;
}

int read_configuration(calibrated_pictures& out, const std::string& path) {
  if (!open_input(path)) {
    complain(path, " can't be opened; name the configuration of the pictures");
    return OCPAN_INPUT;
  }
  std::string said;
  const int result = read_rig_pictures(out.pictures, said, path);
  if (result == code::success) return OCPAN_SUCCESS;
  pass_on(said);
  complain(path, " can't be used; oc_pan check ", path, " tells where it is wrong");
  return map_result(result);
}

// Whether both tell of the same cameras; says where they don't.
bool cameras_agree(const calibrated_pictures& read, const std::string& calibration,
                   const std::string& configuration) {
  const std::vector<camera_details>& given = read.pictures.cameras;
  constexpr const char* advice = "; name the configuration of the rig that was calibrated";
  if (given.size() != read.details.size()) {
    complain(calibration, " holds ", read.details.size(), " cameras but ", configuration, " ",
             given.size(), advice);
    return false;
  }
  for (std::size_t c = 0; c < given.size(); ++c) {
    const camera_details& calibrated = read.details[c];
    if (calibrated.width == given[c].width && calibrated.height == given[c].height) continue;
    complain("camera ", c + 1, " has pictures of ", calibrated.width, " x ", calibrated.height,
             " in ", calibration, " but of ", given[c].width, " x ", given[c].height, " in ",
             configuration, advice);
    return false;
  }
  return true;
}

}  // namespace

int read_calibrated_pictures(calibrated_pictures& out, const std::string& calibration,
                             const std::string& configuration) {
  if (const int result = read_calibration(out, calibration)) return result;
  if (const int result = read_configuration(out, configuration)) return result;
  if (!cameras_agree(out, calibration, configuration)) return OCPAN_INVALID;
  std::vector<std::string> warnings;
  {
    progress_line bar(std::cerr, standard_error_is_terminal());
    out.found = find_boards(
        out.pictures, [&](int done, int total) { bar.show(bar_text(done, total, "pictures")); },
        warnings);
  }
  for (const std::string& warning : warnings) complain(warning);
  out.boards = seen_boards(out.pictures, out.found);
  return OCPAN_SUCCESS;
}

std::string picture_names(const rig_pictures& pictures, std::size_t set, std::size_t frame,
                          const std::vector<std::size_t>& cameras) {
  const cal_frame_set& frames = pictures.sets[set];
  std::string names;
  for (std::size_t p = 0; p < frames.set_cameras.size(); ++p) {
    if (std::find(cameras.begin(), cameras.end(), frames.camera_indices[p]) == cameras.end()) {
      continue;
    }
    const std::string path = frames.set_cameras[p].files[frame];
    if (!names.empty()) names += ", ";
    names += path.substr(path.find_last_of("/\\") + 1);
  }
  return names;
}

}  // namespace ocpan
