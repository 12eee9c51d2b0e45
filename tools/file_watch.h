#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace ocpan {

// Watches files that are written one after the other, on a thread of its own, and tells of
// each as soon as it stands.
class file_watch {
 public:
  // Starts watching.
  //
  //   files        in the order in which they are written; a file that is there already
  //                counts from its next writing on
  //   size         of a whole file, bytes
  //   on_written   called with the index of each file, in order, on the watch's thread
  file_watch(std::vector<std::string> files, std::uintmax_t size,
             std::function<void(std::size_t)> on_written);
  // Ends it, after a last look.
  ~file_watch();
  file_watch(const file_watch&) = delete;
  file_watch& operator=(const file_watch&) = delete;

 private:
  using time = std::filesystem::file_time_type;
  std::optional<time> written_time(const std::string& file) const;
  void look();

  std::vector<std::string> files_;
  std::uintmax_t size_;
  std::function<void(std::size_t)> on_written_;
  std::vector<std::optional<time>> before_;
  std::size_t told_ = 0;
  std::jthread thread_;
};

}  // namespace ocpan
