#include "src/console.h"

#include <atomic>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <limits>
#include <locale>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// Where g++ inlines one of a pair of operators and not the other it takes them for strangers.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif

namespace {

// Of more bytes than these there is no memory.
std::atomic<std::size_t> largest_block = std::numeric_limits<std::size_t>::max();

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return size <= largest_block ? std::malloc(size > 0 ? size : 1) : nullptr;
}
void* operator new(std::size_t size) {
  if (void* memory = operator new(size, std::nothrow)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

namespace ocpan {
namespace {

// Stands behind std::cout while it lives and notes what was written between two flushes.
class flush_recorder : public std::streambuf {
 public:
  flush_recorder() : before_(std::cout.rdbuf(this)) {}
  ~flush_recorder() override { std::cout.rdbuf(before_); }
  std::vector<std::string> flushed;
  std::string waiting;

 protected:
  int_type overflow(int_type c) override {
    waiting += traits_type::to_char_type(c);
    return c;
  }
  int sync() override {
    flushed.push_back(waiting);
    waiting.clear();
    return 0;
  }

 private:
  std::streambuf* before_;
};

TEST(PrintLine, FlushesEachLine) {
  flush_recorder recorder;
  print_line("a ", 1);
  print_line("");
  EXPECT_EQ(recorder.flushed, (std::vector<std::string>{"a 1\n", "\n"}));
  EXPECT_EQ(recorder.waiting, "");
}

TEST(PrintLine, PrintsNoPartOfALineForWhichThereIsNoMemory) {
  flush_recorder recorder;
  const std::string name(10000, 'a');
  largest_block = 5000;
  EXPECT_THROW(print_line("Couldn't open: ", name), std::bad_alloc);
  largest_block = std::numeric_limits<std::size_t>::max();
  EXPECT_TRUE(recorder.flushed.empty());
  EXPECT_EQ(recorder.waiting, "");
}

TEST(PrintLine, PaysNoHeedToTheHostsLocalesAndFlags) {
  struct grouped : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  flush_recorder recorder;
  const std::locale elsewhere(std::locale::classic(), new grouped);
  const std::locale global_before = std::locale::global(elsewhere);
  const std::locale cout_before = std::cout.imbue(elsewhere);
  const auto flags = std::cout.flags();
  std::cout << std::hex << std::boolalpha << std::fixed << std::setw(20);
  print_line(1234567, " ", 0.25, " ", true);
  std::cout.width(0);
  std::cout.flags(flags);
  std::cout.imbue(cout_before);
  std::locale::global(global_before);
  EXPECT_EQ(recorder.flushed, std::vector<std::string>{"1234567 0.25 1\n"});
}

}  // namespace
}  // namespace ocpan
