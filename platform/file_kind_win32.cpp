#include <windows.h>

#include "platform/file_kind.h"

namespace ocpan {

file_kind kind_of_file(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return file_kind::other;
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) return file_kind::folder;
  return attributes & FILE_ATTRIBUTE_DEVICE ? file_kind::other : file_kind::regular;
}

}  // namespace ocpan
