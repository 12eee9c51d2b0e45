#include "tools/output_check.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/native_path.h"
#include "platform/text_file.h"

namespace ocpan {

std::string why_not_writable(std::string_view path) {
  const std::filesystem::path file = native_path(path);
  const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
  std::error_code failure;
  if (!std::filesystem::is_directory(folder, failure)) {
    return "the folder " + folder.string() +
           " isn't there; make it, or name another one (relative to the working folder " +
           std::filesystem::current_path(failure).string() + ")";
  }
  if (!file.has_filename() || std::filesystem::is_directory(file, failure)) {
    return file.string() + " is a folder; name a file";
  }
  const bool was_there = std::filesystem::exists(file, failure);
  // Opening a pipe or a device just to see could wait for ever, or do something.
  if (was_there && !std::filesystem::is_regular_file(file, failure)) return {};
  // Making the file that a link names, and taking away the link, would change what is there.
  if (!was_there && std::filesystem::is_symlink(file, failure)) return {};
  errno = 0;
  std::ofstream probe(file, std::ios::out | std::ios::app);
  if (!probe) {
    const std::string reason = errno != 0 ? std::generic_category().message(errno) : "refused";
    return file.string() + " can't be written (" + reason + "); allow it, or name another file";
  }
  probe.close();
  if (!was_there) std::filesystem::remove(file, failure);
  return {};
}

}  // namespace ocpan
