#pragma once

#include <fstream>
#include <istream>
#include <string>
#include <string_view>

namespace ocpan {

// Opens a file for reading, in the classic locale. A folder can't be opened: the stream
// is in its failed state then, as for a file that isn't there. Every byte is read as it is,
// on Windows too: the ends of lines are read_text_line's matter.
//
//   path   either kind of slash
std::ifstream open_input(std::string_view path, std::ios::openmode mode = std::ios::in);

// Opens a file for writing in place, in the classic locale, replacing what it held. On
// Windows the lines of a text, one not opened as binary, end there in "\r\n".
std::ofstream open_output(std::string_view path, std::ios::openmode mode = std::ios::out);

// Reads the next line without its end, as std::getline does; a carriage return directly
// before the newline is dropped. Gives false when no line is left or reading failed
// (the stream's bad() tells which). Throws std::bad_alloc when there is no memory for it.
bool read_text_line(std::istream& in, std::string& line);

// Flushes and closes an output. Gives false when something couldn't be written (a full
// disk shows only here); the broken file is then removed if it is a regular file. What
// couldn't be opened is left as it is.
[[nodiscard]] bool finish_output(std::ofstream& out, std::string_view path);

}  // namespace ocpan
