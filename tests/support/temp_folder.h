#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace ocpan::testing {

// A fresh folder that goes away with the object.
class temp_folder {
 public:
  temp_folder() {
    std::random_device seed;
    do {
      path_ = std::filesystem::temp_directory_path() / ("ocpan_" + std::to_string(seed()));
    } while (!std::filesystem::create_directory(path_));
  }
  ~temp_folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  temp_folder(const temp_folder&) = delete;
  temp_folder& operator=(const temp_folder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  // The path of a file in the folder, with "/".
  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// A temp_folder that is the process's working folder while the object lives.
class working_folder : public temp_folder {
 public:
  working_folder() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(path());
  }
  ~working_folder() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
  }

 private:
  std::filesystem::path before_;
};

inline void write_file(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// All bytes of a file; empty if it can't be read.
inline std::string read_file(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The lines of a text file, each ended by "\n" whatever ends it on this system.
inline std::string read_text(const std::filesystem::path& path) {
  std::ifstream in(path);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace ocpan::testing
