#include "tables/camera_files.h"

#include "platform/text_file.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {

std::string camera_file(const std::string& prefix, std::uint64_t camera, const char* extension) {
  return prefix + "_" + std::to_string(camera) + extension;
}

int write_bytes(std::ofstream& out, const std::string& path, const void* bytes, std::size_t count) {
  out.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(count));
  if (finish_output(out, path)) return code::success;
  print_line("Error writing output file: ", path);
  return code::output_unopened;
}

}  // namespace ocpan
