#include "simulator/board_series.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <locale>
#include <sstream>
#include <system_error>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "calfiles/selen360_cal_file.h"
#include "platform/text_file.h"
#include "simulator/render_board.h"
#include "simulator/rig_json.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

namespace fs = std::filesystem;

constexpr int jpeg_quality = 95;

std::size_t digits_of_frames(const series_description& series) {
  return std::max<std::size_t>(2, std::to_string(series.frames - 1).size());
}

// Quoted, as it stands in a configuration.
std::string file_pattern(const rig_description& description, const series_description& series,
                         std::size_t camera) {
  std::string pattern = "'^cam" + std::to_string(camera + 1) + "_";
  for (std::size_t i = 0; i < digits_of_frames(series); ++i) pattern += "\\d";
  return pattern + "\\." + description.rendering.format + "$'";
}

// A list of a configuration: between two entries stand a comma and one blank.
template <typename Text>
std::string joined(const std::vector<std::size_t>& cameras, Text&& text) {
  std::string list;
  for (const std::size_t camera : cameras) {
    if (!list.empty()) list += ", ";
    list += text(camera);
  }
  return list;
}

// The shortest text that reads back as the same float.
std::string shortest(float value) {
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

const fault_description* fault_of(const rig_description& description, std::size_t series,
                                  std::size_t camera, int frame) {
  const auto found = std::find_if(
      description.faults.begin(), description.faults.end(), [&](const fault_description& fault) {
        return fault.series == series && fault.camera == camera && fault.frame == frame;
      });
  return found == description.faults.end() ? nullptr : &*found;
}

// Writes one picture; a truncated one lacks its second half.
std::string write_picture(const cv::Mat& picture, const fs::path& path, const std::string& format,
                          bool truncated) {
  std::vector<unsigned char> bytes;
  const std::vector<int> how = format == "jpg"
                                   ? std::vector<int>{cv::IMWRITE_JPEG_QUALITY, jpeg_quality}
                                   : std::vector<int>{cv::IMWRITE_PNG_COMPRESSION, 1};
  if (!cv::imencode("." + format, picture, bytes, how)) {
    return "Couldn't encode: " + path.generic_string();
  }
  std::ofstream out = open_output(path.string(), std::ios::out | std::ios::binary);
  if (!out) return "Couldn't open: " + path.generic_string();
  const std::size_t length = truncated ? bytes.size() / 2 : bytes.size();
  std::copy_n(bytes.begin(), length, std::ostreambuf_iterator<char>(out));
  return finish_output(out, path.string()) ? std::string()
                                           : "Couldn't write: " + path.generic_string();
}

// Different for every picture of a description.
std::uint64_t picture_seed(const rig_description& description, std::size_t series, int frame,
                           std::size_t camera) {
  const std::uint64_t picture = (series * 1000 + static_cast<std::uint64_t>(frame)) * 8 + camera;
  return (description.seed + 1) * 0x9E3779B97F4A7C15u + picture;
}

// What all pictures of a run share.
struct series_run {
  const rig_description& description;
  fs::path pictures;
  std::vector<cv::Mat> fields;  // per camera
};

std::string write_frame(const series_run& run, std::size_t index, int frame, const ModelPose& pose,
                        const std::function<void()>& tell) {
  const rig_description& description = run.description;
  const series_description& series = description.sets[index];
  for (const std::size_t camera : series.cameras) {
    const fault_description* fault = fault_of(description, index, camera, frame);
    const auto has = [&](picture_fault kind) { return fault && fault->fault == kind; };
    if (!has(picture_fault::missing_file)) {
      const cv::Mat picture =
          render_board(description.cameras[camera], run.fields[camera], description.board,
                       has(picture_fault::missing_board) ? nullptr : &pose, description.rendering,
                       picture_seed(description, index, frame, camera));
      const fs::path path =
          run.pictures / series.name / picture_name(description, series, camera, frame);
      const std::string error = write_picture(picture, path, description.rendering.format,
                                              has(picture_fault::truncated_file));
      if (!error.empty()) return error;
    }
    tell();
  }
  return {};
}

// Makes a set's folder and clears it of pictures of an earlier run.
std::string prepare_folder(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) return "Couldn't make the folder: " + folder.generic_string();
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename().string();
    const fs::path extension = entry.path().extension();
    if (name.starts_with("cam") && (extension == ".png" || extension == ".jpg")) {
      fs::remove(entry.path(), error);
    }
  }
  return error ? "Couldn't clear the folder: " + folder.generic_string() : std::string();
}

std::string write_pictures(const rig_description& description, const series_poses& poses,
                           const fs::path& pictures, const series_progress& progress) {
  series_run run{description, pictures, {}};
  for (const rig_camera& camera : description.cameras) {
    run.fields.push_back(field_of_view(camera));
  }
  std::size_t done = 0, total = 0;
  for (const series_description& series : description.sets) {
    total += static_cast<std::size_t>(series.frames) * series.cameras.size();
  }
  const auto tell = [&] {
    ++done;
    if (progress) progress(done, total);
  };
  for (std::size_t s = 0; s < poses.size(); ++s) {
    std::string error = prepare_folder(pictures / description.sets[s].name);
    for (std::size_t frame = 0; error.empty() && frame < poses[s].size(); ++frame) {
      error = write_frame(run, s, static_cast<int>(frame), poses[s][frame], tell);
    }
    if (!error.empty()) return error;
  }
  return {};
}

std::string write_text(const std::string& text, const std::string& path) {
  std::ofstream out = open_output(path);
  if (!out) return "Couldn't open: " + path;
  out << text;
  return finish_output(out, path) ? std::string() : "Couldn't write: " + path;
}

// A configuration can't hold a quote in a path, and a backslash there is a slash.
std::string folder_problem(const std::string& folder) {
  const std::string path = fs::absolute(folder).generic_string();
  if (path.find_first_of("'\\\n\r") == std::string::npos) return {};
  return "A configuration can't name this folder (quote, backslash or line end in it): " + path;
}

}  // namespace

std::string picture_name(const rig_description& description, const series_description& series,
                         std::size_t camera, int frame) {
  std::string number = std::to_string(frame);
  number.insert(0, digits_of_frames(series) - number.size(), '0');
  return "cam" + std::to_string(camera + 1) + "_" + number + "." + description.rendering.format;
}

std::string configuration_text(const rig_description& description, const std::string& folder) {
  const std::string root = fs::absolute(folder).lexically_normal().generic_string();
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << "base_directory: '" << root << "/pictures'\n"
       << "output_filename: '" << root << "/found.cal'\n"
       << "camera_info:\n";
  for (const rig_camera& camera : description.cameras) {
    const camera_details& details = camera.details;
    text << "  - width: " << details.width << ", height: " << details.height
         << ", hfov: " << shortest(details.hfov) << ", lens: " << details.lens << "\n";
  }
  text << "calibration_sets:\n";
  for (const series_description& series : description.sets) {
    const auto number = [](std::size_t camera) { return std::to_string(camera + 1); };
    const auto pattern = [&](std::size_t camera) {
      return file_pattern(description, series, camera);
    };
    text << "  - set_name: '" << series.name
         << "', board_scale: " << shortest(static_cast<float>(description.board.square)) << "\n"
         << "    cameras: [" << joined(series.cameras, number) << "]\n"
         << "    subdir: ['" << series.name << "']\n"
         << "    filename_patterns: [" << joined(series.cameras, pattern) << "]\n"
         << "    board_shape: [" << description.board.width << ", " << description.board.height
         << "]\n";
  }
  return text.str();
}

std::string write_board_series(const rig_description& description, const std::string& folder,
                               const series_progress& progress) {
  if (std::string problem = rig_problem(description); !problem.empty()) return problem;
  if (std::string problem = folder_problem(folder); !problem.empty()) return problem;
  series_poses poses;
  if (std::string error = place_boards(poses, description); !error.empty()) return error;

  const fs::path root = folder;
  std::error_code failure;
  fs::create_directories(root / "pictures", failure);
  if (failure) return "Couldn't make the folder: " + (root / "pictures").generic_string();
  std::string error = write_rig_file(description, (root / "rig.json").string());
  if (!error.empty()) return error;
  error = write_text(configuration_text(description, folder), (root / "calibration.txt").string());
  if (!error.empty()) return error;
  const selen360_cal_file truth(models_of(description), details_of(description));
  const std::string truth_path = (root / "truth.cal").string();
  if (truth.save(truth_path) != code::success) return "Couldn't write: " + truth_path;
  return write_pictures(description, poses, root / "pictures", progress);
}

}  // namespace ocpan
