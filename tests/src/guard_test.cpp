#include "src/guard.h"

#include <new>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include "include/oc_pan_cal.h"
#include "tests/support/captured_output.h"

namespace ocpan {
namespace {

struct guarded_run {
  int result;
  std::string printed;
};

template <typename Body>
guarded_run run(Body&& body) {
  guarded_run run{99, ""};
  run.printed = testing::printed_by([&] { run.result = guarded(body); });
  return run;
}

TEST(Guarded, GivesTheCodeOfTheBody) {
  const guarded_run got = run([] { return 4; });
  EXPECT_EQ(got.result, 4);
  EXPECT_EQ(got.printed, "");
}

TEST(Guarded, GivesTheCodeForMemoryInSilence) {
  const guarded_run ours = run([]() -> int { throw std::bad_alloc(); });
  EXPECT_EQ(ours.result, OCPAN_MEMORY);
  EXPECT_EQ(ours.printed, "");
  const guarded_run opencv =
      run([]() -> int { throw cv::Exception(cv::Error::StsNoMem, "full", "f", "file", 1); });
  EXPECT_EQ(opencv.result, OCPAN_MEMORY);
  EXPECT_EQ(opencv.printed, "");
}

TEST(Guarded, PrintsTheTextOfAnyOtherExceptionAsOneLine) {
  const guarded_run got = run([]() -> int { throw std::runtime_error("one\ntwo\r\nthree"); });
  EXPECT_EQ(got.result, OCPAN_FAILURE);
  EXPECT_EQ(got.printed, "Unexpected failure: one two  three\n");
}

TEST(Guarded, PrintsOneLineForAnExceptionOfOpenCv) {
  const guarded_run got =
      run([]() -> int { throw cv::Exception(cv::Error::StsBadArg, "bad", "f", "file", 1); });
  EXPECT_EQ(got.result, OCPAN_FAILURE);
  EXPECT_EQ(got.printed.rfind("Unexpected failure: ", 0), 0u);
  EXPECT_NE(got.printed.find("bad"), std::string::npos);
  EXPECT_EQ(got.printed.find('\n'), got.printed.size() - 1);
}

TEST(Guarded, TakesWhatIsNoException) {
  const guarded_run got = run([]() -> int { throw 7; });
  EXPECT_EQ(got.result, OCPAN_FAILURE);
  EXPECT_EQ(got.printed, "Unexpected failure: unknown exception\n");
}

}  // namespace
}  // namespace ocpan
