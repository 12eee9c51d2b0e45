#include "platform/terminal.h"

#include <cstdio>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace ocpan {

bool standard_error_is_terminal() {
#ifdef _WIN32
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(STDERR_FILENO) == 1;
#endif
}

}  // namespace ocpan
