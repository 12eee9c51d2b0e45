// What happens when memory runs out, with operators whose failures a test can order.

#include "tests/production/failing_memory.h"

#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "production/production_codes.h"
#include "production/production_report.h"
#include "production/rotation_search.h"
#include "src/result_codes.h"
#include "tests/production/search_scene.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

// Where g++ inlines one of a pair of operators and not the other it takes them for strangers.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif

namespace {

void* array_memory(std::size_t size) noexcept {
  const auto fails = ocpan::testing::array_memory_fails.load();
  if (fails && fails(size)) return nullptr;
  return std::malloc(size > 0 ? size : 1);
}

void* object_memory(std::size_t size) noexcept {
  int& left = ocpan::testing::objects_until_failure;
  if (left >= 0 && left-- == 0) return nullptr;
  return std::malloc(size > 0 ? size : 1);
}

}  // namespace

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return array_memory(size);
}
void* operator new[](std::size_t size) {
  if (void* memory = array_memory(size)) return memory;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return object_memory(size); }
void* operator new(std::size_t size) {
  if (void* memory = object_memory(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

namespace ocpan {
namespace {

using testing::failing_array_memory;
using testing::make_search_scene;
using testing::objects_until_failure;
using testing::search_scene;

search_scene two_cameras() { return make_search_scene({{0, 0, 0}, {0, 0, 0}}, {{0, 1}}); }

TEST(RotationSearch, ComplainsWithoutMemoryForRecordsOrThreads) {
  const search_scene scene = two_cameras();
  const char* const complaints[] = {"t_data alloc failed\n", "t alloc failed\n"};
  static int arrays_until_failure;
  for (int failing = 0; failing < 2; ++failing) {
    std::vector<Eigen::Matrix3d> rotations;
    int result = 0;
    EXPECT_EQ(
        testing::printed_by([&] {
          arrays_until_failure = failing;
          const failing_array_memory one([](std::size_t) { return arrays_until_failure-- == 0; });
          result = rotation_search(rotations, scene.inputs(), 2);
        }),
        complaints[failing]);
    EXPECT_EQ(result, code::out_of_memory);
  }
}

#ifdef __GLIBCXX__  // whose threads take an object each before they start
TEST(RotationSearch, EndsWithTheErrorOfTheFirstWorkerThatHasOne) {
  // Of two workers one isn't started for want of memory, and so keeps its -2. The other finds
  // that the second camera can't be reached.
  search_scene scene = two_cameras();
  scene.graph.clear();
  const int codes[] = {-2, fixture_unusable};
  for (int unstarted = 0; unstarted < 2; ++unstarted) {
    std::vector<Eigen::Matrix3d> rotations(2);
    int result = 0;
    EXPECT_EQ(testing::printed_by([&] {
                objects_until_failure = unstarted;
                result = rotation_search(rotations, scene.inputs(), 2);
                EXPECT_EQ(objects_until_failure, -1);
              }),
              "Error detected!\n");
    EXPECT_EQ(result, codes[unstarted]);
  }
}

TEST(ProductionReport, IsLostWithoutAWordForWantOfMemory) {
  const testing::working_folder folder;
  std::filesystem::create_directory("tmp");
  EXPECT_EQ(testing::printed_by([] {
              const failing_array_memory none([](std::size_t) { return true; });
              EXPECT_NO_THROW(write_production_report({}, 2));
            }),
            "");
  EXPECT_TRUE(std::filesystem::is_empty("tmp"));
}

TEST(ProductionReport, IsLostWithoutAWordForWantOfMemoryForItsName) {
  const testing::working_folder folder;
  std::filesystem::create_directory("tmp");
  testing::write_file("tmp/Prod_QA_Measures.txt", "older");
  EXPECT_EQ(testing::printed_by([] {
              objects_until_failure = 0;
              EXPECT_NO_THROW(write_production_report({}, 2));
              EXPECT_EQ(objects_until_failure, -1);
            }),
            "");
  EXPECT_EQ(testing::read_file("tmp/Prod_QA_Measures.txt"), "older");
}
#endif

}  // namespace
}  // namespace ocpan
