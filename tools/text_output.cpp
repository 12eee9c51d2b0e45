#include "tools/text_output.h"

#include <fstream>

#include "platform/native_path.h"
#include "platform/text_file.h"
#include "tools/messages.h"

namespace ocpan {

bool write_text(const std::string& path, std::string_view text, std::ios::openmode mode) {
  std::ofstream out = open_output(path, mode);
  out << text;
  if (finish_output(out, path)) return true;
  complain(native_path(path), " couldn't be written; free space on its disk");
  return false;
}

}  // namespace ocpan
