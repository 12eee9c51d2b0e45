#include "tools/file_watch.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "platform/native_path.h"

namespace ocpan {

file_watch::file_watch(std::vector<std::string> files, std::uintmax_t size,
                       std::function<void(std::size_t)> on_written)
    : files_(std::move(files)), size_(size), on_written_(std::move(on_written)) {
  for (const std::string& file : files_) before_.push_back(written_time(file));
  thread_ = std::jthread([this](const std::stop_token& stop) {
    constexpr std::chrono::milliseconds pause(20);
    while (!stop.stop_requested()) {
      look();
      std::this_thread::sleep_for(pause);
    }
  });
}

file_watch::~file_watch() {
  thread_.request_stop();
  thread_.join();
  look();
}

std::optional<file_watch::time> file_watch::written_time(const std::string& file) const {
  std::error_code failure;
  const std::filesystem::path path = native_path(file);
  if (std::filesystem::file_size(path, failure) != size_ || failure) return std::nullopt;
  const time written = std::filesystem::last_write_time(path, failure);
  return failure ? std::nullopt : std::optional(written);
}

void file_watch::look() {
  while (told_ < files_.size()) {
    const std::optional<time> written = written_time(files_[told_]);
    if (!written || written == before_[told_]) return;
    on_written_(told_++);
  }
}

}  // namespace ocpan
