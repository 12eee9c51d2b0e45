#include <exception>
#include <memory>
#include <new>
#include <process.h>
#include <windows.h>

#include "platform/processors.h"

namespace ocpan {
namespace {

struct worker {
  const std::function<void(std::size_t)>* body = nullptr;
  std::size_t index = 0;
  std::exception_ptr failure;
};

unsigned __stdcall run_body(void* argument) {
  worker& own = *static_cast<worker*>(argument);
  try {
    (*own.body)(own.index);
  } catch (...) {
    own.failure = std::current_exception();
  }
  return 0;
}

}  // namespace

unsigned processor_count() {
  SYSTEM_INFO info;
  GetSystemInfo(&info);
  return info.dwNumberOfProcessors;
}

bool run_workers(std::size_t count, const std::function<void(std::size_t)>& body) {
  const std::unique_ptr<worker[]> workers(new (std::nothrow) worker[count]);
  const std::unique_ptr<HANDLE[]> handles(new (std::nothrow) HANDLE[count]);
  if (!workers || !handles) return false;
  DWORD started = 0;
  for (std::size_t k = 0; k < count; ++k) {
    workers[k].body = &body;
    workers[k].index = k;
    const auto handle = _beginthreadex(nullptr, 0, run_body, &workers[k], 0, nullptr);
    if (handle != 0) handles[started++] = reinterpret_cast<HANDLE>(handle);
  }
  for (DWORD k = 0; k < started; k += MAXIMUM_WAIT_OBJECTS) {  // the system's limit of one call
    const DWORD left = started - k;
    WaitForMultipleObjects(left < MAXIMUM_WAIT_OBJECTS ? left : MAXIMUM_WAIT_OBJECTS, &handles[k],
                           TRUE, INFINITE);
  }
  for (DWORD k = 0; k < started; ++k) CloseHandle(handles[k]);
  for (std::size_t k = 0; k < count; ++k) {
    if (workers[k].failure) std::rethrow_exception(workers[k].failure);
  }
  return true;
}

}  // namespace ocpan
