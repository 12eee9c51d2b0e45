#include <cerrno>
#include <dirent.h>
#include <memory>

#include "platform/directory_listing.h"
#include "platform/native_path.h"

namespace ocpan {
namespace {

struct folder_closer {
  void operator()(DIR* folder) const { closedir(folder); }
};

}  // namespace

bool read_directory(std::vector<std::string>& names, int& error_number, std::string_view folder) {
  const std::string native = folder.empty() ? "." : native_path(folder);
  const std::unique_ptr<DIR, folder_closer> opened(opendir(native.c_str()));
  if (!opened) {
    error_number = errno;
    return false;
  }
  for (;;) {
    errno = 0;  // the end of the folder leaves it alone, a failure doesn't
    const dirent* entry = readdir(opened.get());
    if (!entry) break;
    names.emplace_back(entry->d_name);
  }
  error_number = errno;
  return error_number == 0;
}

}  // namespace ocpan
