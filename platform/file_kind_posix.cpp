#include <climits>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>

#include "platform/file_kind.h"

namespace ocpan {

file_kind kind_of_file(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return file_kind::other;
  if (S_ISREG(status.st_mode)) return file_kind::regular;
  return S_ISDIR(status.st_mode) ? file_kind::folder : file_kind::other;
}

void remove_regular_file(const std::string& path) {
  if (kind_of_file(path) != file_kind::regular) return;
  char target[PATH_MAX];
  if (realpath(path.c_str(), target)) std::remove(target);
}

}  // namespace ocpan
