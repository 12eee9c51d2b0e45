#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ocpan {

// The folder for debug pictures, under the working folder.
inline constexpr const char* debug_folder = "tmp";

// Makes the folder that the library writes debug pictures to, and takes it away again if
// nothing got into it. A folder that was there stays.
class debug_folder_holder {
 public:
  debug_folder_holder();
  ~debug_folder_holder();
  debug_folder_holder(const debug_folder_holder&) = delete;
  debug_folder_holder& operator=(const debug_folder_holder&) = delete;

  // Why there is no folder, empty if there is one.
  const std::string& failure() const { return failure_; }

 private:
  bool made_ = false;
  std::string failure_;
};

// Knows which of a calibration's files the run wrote, and which were there before it. Goes
// by the files' own times, so that the clock of a file server may differ.
class cal_outputs {
 public:
  // Looks at what is there before the run.
  //
  //   calibration   the name as the library has it; empty if it isn't known
  explicit cal_outputs(const std::string& calibration);

  // The calibration file and the two reports, in the system's form; empty if the name isn't
  // known.
  const std::vector<std::string>& files() const { return files_; }
  bool written(const std::string& file) const;
  // How many of the debug pictures, as the library names them, were written.
  int debug_pictures_written(const std::set<std::string>& names) const;

 private:
  using time = std::filesystem::file_time_type;
  static std::optional<time> time_of(const std::string& file);

  std::vector<std::string> files_;
  std::map<std::string, time> times_before_;
};

}  // namespace ocpan
