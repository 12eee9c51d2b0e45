#include "tools/output_folder.h"

#include <filesystem>
#include <system_error>

#include "platform/native_path.h"

namespace ocpan {

std::string make_folder(const std::string& path) {
  std::error_code failure;
  const std::filesystem::path folder = native_path(path);
  std::filesystem::create_directories(folder, failure);
  if (std::filesystem::is_directory(folder)) return {};
  return "the folder " + folder.string() + " can't be made" +
         (failure ? " (" + failure.message() + ")" : std::string()) + "; name another one";
}

}  // namespace ocpan
