#include <algorithm>
#include <filesystem>
#include <iostream>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fuzz/targets.h"
#include "tests/support/temp_folder.h"

namespace ocpan::fuzz {

void PrintTo(const target& one, std::ostream* out) { *out << one.name; }

namespace {

std::vector<std::filesystem::path> corpus_of(const std::string& target_name) {
  std::vector<std::filesystem::path> files;
  const std::filesystem::directory_iterator folder(std::filesystem::path(CORPUS_FOLDER) /
                                                   target_name);
  for (const auto& entry : folder) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

class FuzzCorpus : public ::testing::TestWithParam<target> {};

TEST_P(FuzzCorpus, BreaksNoPromise) {
  std::streambuf* const before = std::cout.rdbuf(nullptr);
  const auto files = corpus_of(GetParam().name);
  for (const std::filesystem::path& file : files) {
    const std::string bytes = testing::read_file(file);
    const auto* const data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    EXPECT_NO_THROW(GetParam().run({data, bytes.size()})) << file;
  }
  std::cout.rdbuf(before);
  EXPECT_GE(files.size(), 3u);
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzCorpus, ::testing::ValuesIn(targets),
                         [](const auto& one) { return one.param.name; });

}  // namespace
}  // namespace ocpan::fuzz
