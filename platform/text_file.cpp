#include "platform/text_file.h"

#include <locale>

#include "platform/file_kind.h"
#include "platform/native_path.h"

namespace ocpan {

std::ifstream open_input(std::string_view path, std::ios::openmode mode) {
  const std::string native = native_path(path);
  std::ifstream in;
  in.imbue(std::locale::classic());
  if (kind_of_file(native) == file_kind::folder) {
    in.setstate(std::ios::failbit);
  } else {
    in.open(native, mode | std::ios::in | std::ios::binary);
  }
  return in;
}

std::ofstream open_output(std::string_view path, std::ios::openmode mode) {
  std::ofstream out;
  out.imbue(std::locale::classic());
  const std::string native = native_path(path);
  try {
    out.open(native, mode | std::ios::out | std::ios::trunc);
  } catch (...) {  // opened and emptied, but no memory for the stream's buffer
    out.close();
    remove_regular_file(native);
    throw;
  }
  return out;
}

bool read_text_line(std::istream& in, std::string& line) {
  // A stream would keep the failed allocation to itself, and what is left of the file with it.
  const std::ios::iostate before = in.exceptions();
  try {
    in.exceptions(std::ios::badbit);
    std::getline(in, line);
  } catch (const std::ios::failure&) {  // a failed read: bad() tells
  }
  in.exceptions(before);
  if (!in) return false;
  const bool ended_by_newline = !in.eof();
  if (ended_by_newline && !line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

bool finish_output(std::ofstream& out, std::string_view path) {
  const bool opened = out.is_open();
  out.flush();
  const bool written = out.good();
  out.close();
  if (opened && !written) remove_regular_file(native_path(path));
  return written;
}

}  // namespace ocpan
