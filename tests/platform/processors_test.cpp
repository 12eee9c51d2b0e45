#include "platform/processors.h"

#include <atomic>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/no_new_threads.h"

namespace ocpan {
namespace {

TEST(RunWorkers, RunsEachIndexOnceOnAThreadOfItsOwn) {
  std::vector<std::thread::id> threads(5);
  std::vector<std::atomic<int>> runs(5);
  // All wait for the last one, so that no thread can take over a finished one's identity.
  std::atomic<int> waiting = 5;
  ASSERT_TRUE(run_workers(5, [&](std::size_t k) {
    ++runs[k];
    threads[k] = std::this_thread::get_id();
    --waiting;
    while (waiting > 0) std::this_thread::yield();
  }));
  for (const auto& count : runs) EXPECT_EQ(count, 1);
  std::set<std::thread::id> distinct(threads.begin(), threads.end());
  distinct.insert(std::this_thread::get_id());
  EXPECT_EQ(distinct.size(), 6u);
}

TEST(RunWorkers, RunsNothingForNoWorkers) {
  EXPECT_TRUE(run_workers(0, [](std::size_t) { FAIL(); }));
}

TEST(RunWorkers, ThrowsWhatABodyThrewOnceAllHaveEnded) {
  std::atomic<int> ended = 0;
  const auto run = [&] {
    return run_workers(3, [&](std::size_t k) {
      ++ended;
      if (k > 0) throw std::runtime_error(std::to_string(k));
    });
  };
  try {
    static_cast<void>(run());
    FAIL();
  } catch (const std::runtime_error& failure) {
    EXPECT_STREQ(failure.what(), "1");
  }
  EXPECT_EQ(ended, 3);
}

#ifdef __GLIBC__
TEST(RunWorkers, LeavesOutThreadsThatCannotBeStarted) {
  const testing::no_new_threads none;
  EXPECT_TRUE(run_workers(2, [](std::size_t) { FAIL(); }));
}
#endif

}  // namespace
}  // namespace ocpan
