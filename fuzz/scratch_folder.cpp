#include "fuzz/scratch_folder.h"

#include "tests/support/temp_folder.h"

namespace ocpan::fuzz {

const std::filesystem::path& scratch_folder() {
  static const testing::temp_folder folder;
  return folder.path();
}

std::string scratch_file(const std::string& name) { return (scratch_folder() / name).string(); }

}  // namespace ocpan::fuzz
