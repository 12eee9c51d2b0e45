#include <string>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include <gtest/gtest.h>

#include "common/alg_lib.h"

namespace ocpan {
namespace {

// The process ends with -1, of which POSIX keeps one byte.
#ifdef _WIN32
constexpr int assertion_exit_code = -1;
#else
constexpr int assertion_exit_code = 255;
#endif

// A line number, for the regular expressions of either system.
#if GTEST_USES_SIMPLE_RE
const std::string line_number = "\\d+";
#else
const std::string line_number = "[1-9][0-9]*";
#endif

// What a failed assertion prints, from its first to its last byte.
std::string assertion(const std::string& function, const std::string& condition) {
  std::string escaped;
  for (char c : condition) {
    if (std::string("[]().*+?|^$\\{}").find(c) != std::string::npos) escaped.push_back('\\');
    escaped.push_back(c);
  }
  return "^\nASSERT failed at:\n  >File name: alg_lib\n  >Function : " + function +
         "\n  >Line No. : " + line_number + "\n  >Condition: " + escaped + "\n$";
}

// Sends what the child prints where the death test reads.
void print_to_error_stream() {
#ifdef _WIN32
  _dup2(2, 1);
#else
  dup2(STDERR_FILENO, STDOUT_FILENO);
#endif
}

template <typename Call>
void expect_assertion(Call&& call, const std::string& function, const std::string& condition) {
  EXPECT_EXIT(
      {
        print_to_error_stream();
        call();
      },
      ::testing::ExitedWithCode(assertion_exit_code), assertion(function, condition));
}

TEST(AlgLibDeathTest, GetChromWHAssertsItsPointers) {
  YUV_PICTURE picture{};
  std::uint32_t size = 0;
  const std::string function = "ALG_LIB_GetChromWH";
  expect_assertion([&] { ALG_LIB_GetChromWH(nullptr, &size, &size); }, function, "pstPic != 0L");
  expect_assertion([&] { ALG_LIB_GetChromWH(&picture, nullptr, &size); }, function, "pu32W != 0L");
  expect_assertion([&] { ALG_LIB_GetChromWH(&picture, &size, nullptr); }, function, "pu32H != 0L");
}

TEST(AlgLibDeathTest, GetYuvMemAssertsThePicture) {
  expect_assertion([] { (void)ALG_LIB_GetYuvMem(nullptr); }, "ALG_LIB_GetYuvMem", "pstPic != 0L");
}

TEST(AlgLibDeathTest, InitYuvMemExAssertsThePicture) {
  expect_assertion([] { (void)ALG_LIB_InitYuvMemEx(nullptr, 1, 1, PIXEL_FORMAT_YUV_400, 8); },
                   "ALG_LIB_InitYuvMemEx", "pstPic != 0L");
}

TEST(AlgLibDeathTest, InitYuvMemExAssertsTheFormat) {
  int checked = 0;
  for (std::uint32_t format : {0u, 12u, 25u}) {
    YUV_PICTURE picture{};
    expect_assertion(
        [&] { (void)ALG_LIB_InitYuvMemEx(&picture, 1, 1, static_cast<PIXEL_FORMAT>(format), 8); },
        "ALG_LIB_InitYuvMemEx",
        "enPixelFormat >= PIXEL_FORMAT_YUV_A422 &&enPixelFormat <= "
        "PIXEL_FORMAT_YUV_SEMIPLANAR_400");
    ++checked;
  }
  EXPECT_EQ(checked, 3);
}

TEST(AlgLibDeathTest, WriteOneFrameExAssertsFilePictureAndLuminanceInThatOrder) {
  YUV_PICTURE picture{};
  const std::string function = "ALG_LIB_WriteOneFrameEx";
  expect_assertion([] { (void)ALG_LIB_WriteOneFrameEx(nullptr, 8, nullptr); }, function,
                   "pfOut != 0L");
  expect_assertion([] { (void)ALG_LIB_WriteOneFrameEx(nullptr, 8, stderr); }, function,
                   "pstPic != 0L");
  expect_assertion([&] { (void)ALG_LIB_WriteOneFrameEx(&picture, 8, stderr); }, function,
                   "pstPic->pVirAddr[Y_INDEX] != 0L");
}

}  // namespace
}  // namespace ocpan
