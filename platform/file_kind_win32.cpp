#include <cstdio>
#include <windows.h>

#include "platform/file_kind.h"

namespace ocpan {

file_kind kind_of_file(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return file_kind::other;
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) return file_kind::folder;
  return attributes & FILE_ATTRIBUTE_DEVICE ? file_kind::other : file_kind::regular;
}

void remove_regular_file(const std::string& path) {
  if (kind_of_file(path) == file_kind::regular) std::remove(path.c_str());
}

}  // namespace ocpan
