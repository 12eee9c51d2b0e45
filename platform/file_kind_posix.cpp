#include <sys/stat.h>

#include "platform/file_kind.h"

namespace ocpan {

file_kind kind_of_file(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return file_kind::other;
  if (S_ISREG(status.st_mode)) return file_kind::regular;
  return S_ISDIR(status.st_mode) ? file_kind::folder : file_kind::other;
}

}  // namespace ocpan
