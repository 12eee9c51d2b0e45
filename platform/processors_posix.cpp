#include <exception>
#include <memory>
#include <new>
#include <system_error>
#include <thread>

#include "platform/processors.h"

namespace ocpan {

unsigned processor_count() { return std::thread::hardware_concurrency(); }

bool run_workers(std::size_t count, const std::function<void(std::size_t)>& body) {
  struct worker {
    std::thread thread;
    std::exception_ptr failure;
  };
  const std::unique_ptr<worker[]> workers(new (std::nothrow) worker[count]);
  if (!workers) return false;
  for (std::size_t k = 0; k < count; ++k) {
    try {
      workers[k].thread = std::thread([&body, &workers, k] {
        try {
          body(k);
        } catch (...) {
          workers[k].failure = std::current_exception();
        }
      });
    } catch (const std::system_error&) {  // no thread to be had
    } catch (const std::bad_alloc&) {
    }
  }
  for (std::size_t k = 0; k < count; ++k) {
    if (workers[k].thread.joinable()) workers[k].thread.join();
  }
  for (std::size_t k = 0; k < count; ++k) {
    if (workers[k].failure) std::rethrow_exception(workers[k].failure);
  }
  return true;
}

}  // namespace ocpan
