#include "tests/faults/fault_child.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <execinfo.h>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <set>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "include/oc_pan_cal.h"
#include "tests/faults/call_owner.h"
#include "tests/faults/quiet_output.h"
#include "tests/faults/resources.h"
#include "tests/support/temp_folder.h"

namespace ocpan::faults {
namespace {

namespace fs = std::filesystem;

constexpr unsigned most_seconds = 60;
constexpr long most_stacks = 4'000'000;
const char* const printed_name = "../printed.txt";

// What a child hands back, in pages that both share.
struct shared_page {
  bool fired, finished, foreign;
  int code, death_signal;
  long calls;
  call_stack refused_at, died_at;
  long kept_count, kept_threads;
  kept_resource kept[200];
  char problem[1000];
  char details[6000];
};

template <typename Record>
Record* shared_pages(std::size_t count) {
  void* pages = mmap(nullptr, count * sizeof(Record), PROT_READ | PROT_WRITE,
                     MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (pages == MAP_FAILED) std::abort();
  return static_cast<Record*>(pages);
}

shared_page* page() {
  static shared_page* const shared = shared_pages<shared_page>(1);
  return shared;
}

template <std::size_t size>
void store(char (&to)[size], const std::string& text) {
  std::snprintf(to, size, "%s", text.c_str());
}

constexpr int own_exit = -1;  // in the place of a signal's number

void print_to(int stream, const char* name) {
  std::cout.flush();
  std::fflush(stdout);
  const int file = open(name, O_WRONLY | O_CREAT | O_TRUNC, 0666);
  dup2(file, stream);
  close(file);
}

void settle_output() {
  std::cout.clear();
  std::clearerr(stdout);
  std::cout.flush();
  std::fflush(stdout);
}

// Only copies: after a wild jump little else can be done, and the walk itself may end it.
extern "C" void tell_death(int number) {
  controls()->disarm();
  page()->death_signal = number;
  std::array<void*, call_stack{}.size() + 1> stack{};
  backtrace(stack.data(), static_cast<int>(stack.size()));
  std::copy(stack.begin() + 1, stack.end(), page()->died_at.begin());  // but for this function
  _exit(1);
}

// Libraries that end the whole program, as libjpeg does without memory.
void tell_exit() {
  if (!page()->finished) tell_death(own_exit);
}

void watch_for_death() {
  std::atexit(tell_exit);
  static char stack[1 << 16];
  stack_t alternate{};
  alternate.ss_sp = stack;
  alternate.ss_size = sizeof(stack);
  sigaltstack(&alternate, nullptr);
  struct sigaction action {};
  action.sa_handler = tell_death;
  action.sa_flags = SA_ONSTACK | static_cast<int>(SA_RESETHAND);
  for (const int number : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGALRM}) {
    sigaction(number, &action, nullptr);
  }
  alarm(most_seconds);
}

void name_who_died(int status) {
  const bool stack_is_lost = !page()->died_at[0];
  const call_stack& stack = stack_is_lost ? page()->refused_at : page()->died_at;
  const call_owner owner = owner_of(stack);
  const int number = page()->death_signal;
  const char* const how = stack_is_lost        ? "loses its stack after a failure in "
                          : number == own_exit ? "ends the program in "
                          : number == SIGALRM  ? "hangs in "
                                               : "dies in ";
  page()->foreign = !owner.is_ours;
  store(page()->problem, how + owner.name);
  store(page()->details, stack_text(page()->refused_at) + "  and then, wait status " +
                             std::to_string(status) + "\n" + stack_text(page()->died_at));
}

void name_who_keeps() {
  page()->foreign = page()->kept_threads <= 0;  // others' threads stay from the first run on
  std::set<std::string> names;
  std::string details;
  for (const kept_resource& resource : std::span(page()->kept, page()->kept_count)) {
    const call_owner owner = owner_of(resource.stack);
    page()->foreign = page()->foreign && !owner.is_ours;
    names.insert((resource.is_memory ? "memory of " : "a descriptor of ") + owner.name);
    details += stack_text(resource.stack) + "\n";
  }
  std::string problem = "keeps";
  for (const std::string& name : names) problem += " " + name + ",";
  problem.pop_back();
  store(page()->problem, problem);
  store(page()->details, details);
}

// Runs `body` in a child whose printing is kept and whose death is told.
template <typename Body>
void in_child(Body&& body) {
  *page() = {};
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    print_to(STDOUT_FILENO, printed_name);
    print_to(STDERR_FILENO, "/dev/null");  // what OpenCV's libraries say
    watch_for_death();
    body();
    page()->finished = true;
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (!page()->finished) name_who_died(status);
  if (page()->kept_count > 0) name_who_keeps();
}

// What a run keeps: memory, descriptors, threads.
resources kept_by_run(const export_job& job, const fault& which, int& code) {
  const resources before = resources_now();
  controls()->arm(which.kind, which.nth, which.lasting);
  code = job.run();
  controls()->disarm();
  settle_output();
  return resources_now() - before;
}

void track_who_keeps(const export_job& job, const good_run& good, const fault& which) {
  put_back(job, good);
  const long threads = resources_now().threads;
  controls()->begin_tracking();
  controls()->arm(which.kind, which.nth, which.lasting);
  static_cast<void>(job.run());
  controls()->disarm();
  page()->kept_count = controls()->end_tracking(page()->kept, std::size(page()->kept));
  page()->kept_threads = resources_now().threads - threads;
}

// A run again and again, until one keeps nothing: what is made once is no leak.
bool keeps_more_each_time(const export_job& job, const good_run& good, const fault& which) {
  for (int repeat = 0; repeat < 3; ++repeat) {
    put_back(job, good);
    int code = 0;
    if (nothing_kept(kept_by_run(job, which, code))) return false;
  }
  return true;
}

void fault_in_child(const export_job& job, const good_run& good, const fault& which) {
  int code = 0;
  controls()->tell_first_failure(&page()->refused_at);
  const resources kept = kept_by_run(job, which, code);
  page()->calls = controls()->calls();
  page()->fired = controls()->failures() > 0;
  page()->code = code;
  std::string problem;
  if (code < OCPAN_FAILURE || code > OCPAN_INVALID) problem += "no code; ";
  problem += folder_problem(job, good, code, testing::read_file(printed_name));
  store(page()->problem, problem);
  if (problem.empty() && !nothing_kept(kept) && keeps_more_each_time(job, good, which)) {
    track_who_keeps(job, good, which);
  }
  controls()->tell_first_failure(nullptr);  // not before: another call fails in each repeat
}

}  // namespace

bool run_without_fault(good_run& good, const export_job& job) {
  good.inputs = state_of_working_folder();
  in_child([&] {
    int code = 0;
    static_cast<void>(kept_by_run(job, {}, code));
    page()->code = code;
  });
  good.after = state_of_working_folder();
  good.printed = testing::read_file(printed_name);
  return page()->finished && page()->code == OCPAN_SUCCESS;
}

std::vector<std::uint64_t> call_stacks(const export_job& job, const good_run& good,
                                       call_kind kind) {
  static auto* const hashes = shared_pages<std::uint64_t>(most_stacks);
  put_back(job, good);
  in_child([&] {
    controls()->record_stacks(hashes, most_stacks);
    controls()->arm(kind, 0, false);
    static_cast<void>(job.run());
    controls()->disarm();
    page()->calls = controls()->calls();
  });
  return {hashes, hashes + std::min(page()->calls, most_stacks)};
}

fault_outcome run_with_fault(const export_job& job, const good_run& good, const fault& which) {
  put_back(job, good);
  in_child([&] { fault_in_child(job, good, which); });
  const shared_page& told = *page();
  std::string details = told.details;
  if (details.empty()) details = stack_text(told.refused_at) + testing::read_file(printed_name);
  return {told.fired || !told.finished,
          told.finished,
          told.code,
          told.calls,
          told.foreign,
          told.problem,
          told.details};
}

void warm_up(const export_job& job, const good_run& good) {
  for (int repeat = 0; repeat < 2; ++repeat) {
    put_back(job, good);
    const quiet_output quiet;
    static_cast<void>(job.run());
  }
}

}  // namespace ocpan::faults
