#include "tools/cal_outputs.h"

#include <algorithm>
#include <system_error>

#include "platform/native_path.h"

namespace ocpan {

debug_folder_holder::debug_folder_holder() {
  std::error_code failure;
  made_ = std::filesystem::create_directory(debug_folder, failure);
  if (failure) {
    failure_ = failure.message();
  } else if (!std::filesystem::is_directory(debug_folder, failure)) {
    failure_ = "a file has that name";
  }
}

debug_folder_holder::~debug_folder_holder() {
  std::error_code not_empty;
  if (made_) std::filesystem::remove(debug_folder, not_empty);
}

cal_outputs::cal_outputs(const std::string& calibration) {
  if (!calibration.empty()) {
    const std::string file = native_path(calibration);
    files_ = {file, file + "_distance.csv", file + "_QA_Measures.txt"};
  }
  for (const std::string& file : files_) {
    if (const std::optional<time> before = time_of(file)) times_before_[file] = *before;
  }
  std::error_code failure;
  std::filesystem::directory_iterator pictures(debug_folder, failure);
  for (; !failure && pictures != std::filesystem::directory_iterator();
       pictures.increment(failure)) {
    const std::string file = pictures->path().lexically_normal().string();
    if (const std::optional<time> before = time_of(file)) times_before_[file] = *before;
  }
}

bool cal_outputs::written(const std::string& file) const {
  const std::optional<time> now = time_of(file);
  const auto before = times_before_.find(file);
  return now && (before == times_before_.end() || before->second != *now);
}

int cal_outputs::debug_pictures_written(const std::set<std::string>& names) const {
  return static_cast<int>(std::count_if(names.begin(), names.end(), [&](const auto& name) {
    return written(std::filesystem::path(native_path(name)).lexically_normal().string());
  }));
}

std::optional<cal_outputs::time> cal_outputs::time_of(const std::string& file) {
  std::error_code failure;
  if (!std::filesystem::is_regular_file(file, failure)) return std::nullopt;
  const time written = std::filesystem::last_write_time(file, failure);
  if (failure) return std::nullopt;
  return written;
}

}  // namespace ocpan
