#include "platform/native_path.h"

#include <algorithm>

namespace ocpan {

std::string native_path(std::string_view path) {
  std::string native(path);
#ifndef _WIN32
  std::replace(native.begin(), native.end(), '\\', '/');
#endif
  return native;
}

}  // namespace ocpan
