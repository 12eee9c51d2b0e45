#include "tools/report/input_files.h"

#include <chrono>
#include <filesystem>
#include <iomanip>
#include <iterator>
#include <locale>
#include <set>
#include <sstream>
#include <system_error>

#include "platform/native_path.h"
#include "platform/text_file.h"
#include "tools/report/sha256.h"

namespace ocpan {
namespace {

input_file facts_of(const std::string& role, const std::string& name) {
  input_file file{role, name, 0, "", ""};
  std::error_code failure;
  const std::filesystem::path path = native_path(name);
  const auto changed = std::filesystem::last_write_time(path, failure);
  if (!failure) {
    const auto time = std::chrono::file_clock::to_sys(changed);
    file.time = time_text(std::chrono::system_clock::to_time_t(
        std::chrono::time_point_cast<std::chrono::system_clock::duration>(time)));
  }
  std::ifstream in = open_input(name, std::ios::binary);
  if (!in) return file;
  const std::string bytes{std::istreambuf_iterator<char>(in), {}};
  if (in.bad()) return file;
  file.bytes = bytes.size();
  file.checksum = sha256(bytes);
  return file;
}

}  // namespace

std::string time_text(std::time_t time) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  const std::tm* const local = std::localtime(&time);
  if (local != nullptr) text << std::put_time(local, "%Y-%m-%d %H:%M:%S");
  return text.str();
}

std::vector<input_file> input_files(const std::string& calibration,
                                    const std::string& configuration,
                                    const std::vector<rig_picture>& pictures) {
  std::vector<input_file> files{facts_of("calibration", calibration),
                                facts_of("configuration", configuration)};
  std::set<std::string> known;
  for (const rig_picture& picture : pictures) {
    if (known.insert(picture.file).second) files.push_back(facts_of("picture", picture.file));
  }
  return files;
}

}  // namespace ocpan
