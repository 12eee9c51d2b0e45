#include <cerrno>
#include <windows.h>

#include "platform/directory_listing.h"

namespace ocpan {
namespace {

class search_handle {
 public:
  explicit search_handle(HANDLE handle) : handle_(handle) {}
  ~search_handle() {
    if (valid()) FindClose(handle_);
  }
  search_handle(const search_handle&) = delete;
  search_handle& operator=(const search_handle&) = delete;

  bool valid() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE get() const { return handle_; }

 private:
  HANDLE handle_;
};

}  // namespace

bool read_directory(std::vector<std::string>& names, int& error_number, std::string_view folder) {
  const std::string search_text = std::string(folder) + "*";
  WIN32_FIND_DATAA entry;
  const search_handle search(FindFirstFileA(search_text.c_str(), &entry));
  if (!search.valid()) {
    error_number = errno;
    return false;
  }
  do {
    names.emplace_back(entry.cFileName);
  } while (FindNextFileA(search.get(), &entry));
  return true;
}

}  // namespace ocpan
