#include <cstddef>
#include <memory>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "calfiles/create_cal.h"
#include "src/result_codes.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

// The sanitizers bring a malloc of their own.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace {

// Counts down to the allocation that is to fail; negative: none.
int allocations_until_failure = -1;

}  // namespace

extern "C" {
void* __libc_malloc(std::size_t size);

void* malloc(std::size_t size) {
  if (allocations_until_failure >= 0 && allocations_until_failure-- == 0) return nullptr;
  return __libc_malloc(size);
}
}

namespace ocpan {
namespace {

using testing::printed_by;
using testing::temp_folder;
using testing::write_file;

std::unique_ptr<cal> created(const char* text, bool use_file_class) {
  const temp_folder folder;
  write_file(folder.file("rig"), text);
  std::unique_ptr<cal> object;
  EXPECT_EQ(create_cal(object, folder.file("rig").c_str(), use_file_class, 1.0f), code::success);
  return object;
}

// Lets one allocation after the other fail, until none is left to, with a matrix to be filled
// that holds another size. As long as it has that size it must hold its numbers: a block that
// was given back doesn't.
void expect_whole_matrix_without_memory(const cal& object) {
  const Eigen::MatrixX2d pixels = Eigen::MatrixX2d::Constant(40, 2, 30.0);
  const Eigen::MatrixX3d former = Eigen::MatrixX3d::Constant(50, 3, 7.0);
  int failures = 0;
  for (bool failed = true; failed;) {
    auto points = std::make_unique<Eigen::MatrixX3d>(former);
    failed = false;
    try {
      allocations_until_failure = failures;
      static_cast<void>(object.cam_unproject(*points, pixels, 0));
    } catch (const std::bad_alloc&) {
      failed = true;
      ++failures;
    }
    allocations_until_failure = -1;
    if (!failed) {
      EXPECT_EQ(points->rows(), 40);
    } else if (points->rows() == former.rows() && *points != former) {
      ADD_FAILURE() << "allocation " << failures;
      static_cast<void>(points.release());  // giving it back again would end the program
    }
    ASSERT_LT(failures, 10000);
  }
  EXPECT_GT(failures, 0);
}

TEST(CamUnproject, OfACalibrationFileLeavesAWholeMatrixWithoutMemory) {
  expect_whole_matrix_without_memory(
      *created("Width:64 Height:48\nC_0:0 C_1:0 C_2:0 A_th:3 H_0:32 V_1:-32 O_th:3 L:1\n", true));
}

TEST(CamUnproject, OfAProjectFileLeavesAWholeMatrixWithoutMemory) {
  expect_whole_matrix_without_memory(*created("i w64 h48 f2 v90\n", false));
}

TEST(CreateCal, TellsThatThereIsNoMemoryForTheObject) {
  int refusals = 0;
  for (const bool use_file_class : {true, false}) {
    std::unique_ptr<cal> object;
    int result = 0;
    const std::string printed = printed_by([&] {
      allocations_until_failure = 0;
      result = create_cal(object, "any", use_file_class, 1.0f);
      allocations_until_failure = -1;
    });
    EXPECT_EQ(printed, "Failed to allocate cal object\n");
    EXPECT_EQ(result, code::out_of_memory);
    EXPECT_EQ(object, nullptr);
    ++refusals;
  }
  EXPECT_EQ(refusals, 2);
}

}  // namespace
}  // namespace ocpan

#endif
