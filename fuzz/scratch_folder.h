#pragma once

#include <filesystem>
#include <string>

namespace ocpan::fuzz {

// A folder of this process, in the one for temporary files. It goes at the process's end.
const std::filesystem::path& scratch_folder();

// The path of a file in it.
std::string scratch_file(const std::string& name);

// The scratch folder is the working folder while the object lives.
class inside_scratch_folder {
 public:
  inside_scratch_folder() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(scratch_folder());
  }
  ~inside_scratch_folder() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
  }
  inside_scratch_folder(const inside_scratch_folder&) = delete;
  inside_scratch_folder& operator=(const inside_scratch_folder&) = delete;

 private:
  std::filesystem::path before_;
};

}  // namespace ocpan::fuzz
