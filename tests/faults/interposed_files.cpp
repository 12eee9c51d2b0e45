// The C library's calls on files and folders, each failing when it is told to.
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include "tests/faults/call_stacks.h"
#include "tests/faults/fault_orders.h"

namespace ocpan::faults {
namespace {

// The C library's own function of that name; its address is looked up once.
template <typename Function>
class behind {
 public:
  explicit behind(const char* name)
      : function_(reinterpret_cast<Function*>(next_definition(name))) {}
  template <typename... Arguments>
  auto operator()(Arguments... arguments) const {
    return function_(arguments...);
  }

 private:
  Function* function_;
};

using open_function = int(const char*, int, mode_t);
using openat_function = int(int, const char*, int, mode_t);

bool refused(call_kind kind, int error) {
  if (!must_fail(kind)) return false;
  errno = error;
  return true;
}

int opened(int descriptor) {
  if (descriptor >= 0) remember(static_cast<std::uint64_t>(descriptor), false);
  return descriptor;
}

std::FILE* opened(std::FILE* file) {
  if (file) remember(static_cast<std::uint64_t>(fileno(file)), false);
  return file;
}

// What a failed call leaves in a stream of the C library.
void mark_failed(std::FILE* file) { file->_flags |= 0x20; }

mode_t mode_of(int flags, va_list arguments) {
  return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace
}  // namespace ocpan::faults

using namespace ocpan::faults;

extern "C" {

int open(const char* path, int flags, ...) {
  static const behind<open_function> real("open");
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = mode_of(flags, arguments);
  va_end(arguments);
  return refused(call_kind::open, EMFILE) ? -1 : opened(real(path, flags, mode));
}

int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = mode_of(flags, arguments);
  va_end(arguments);
  return open(path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
  static const behind<openat_function> real("openat");
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = mode_of(flags, arguments);
  va_end(arguments);
  return refused(call_kind::open, EMFILE) ? -1 : opened(real(folder, path, flags, mode));
}

std::FILE* fopen(const char* path, const char* mode) {
  static const behind<decltype(fopen)> real("fopen");
  return refused(call_kind::open, EMFILE) ? nullptr : opened(real(path, mode));
}

std::FILE* fopen64(const char* path, const char* mode) { return fopen(path, mode); }

ssize_t read(int descriptor, void* bytes, std::size_t count) {
  static const behind<decltype(read)> real("read");
  return refused(call_kind::read, EIO) ? -1 : real(descriptor, bytes, count);
}

std::size_t fread(void* bytes, std::size_t size, std::size_t count, std::FILE* file) {
  static const behind<decltype(fread)> real("fread");
  if (!refused(call_kind::read, EIO)) return real(bytes, size, count, file);
  mark_failed(file);
  return 0;
}

ssize_t write(int descriptor, const void* bytes, std::size_t count) {
  static const behind<decltype(write)> real("write");
  return refused(call_kind::write, ENOSPC) ? -1 : real(descriptor, bytes, count);
}

ssize_t writev(int descriptor, const iovec* pieces, int count) {
  static const behind<decltype(writev)> real("writev");
  return refused(call_kind::write, ENOSPC) ? -1 : real(descriptor, pieces, count);
}

std::size_t fwrite(const void* bytes, std::size_t size, std::size_t count, std::FILE* file) {
  static const behind<decltype(fwrite)> real("fwrite");
  if (!refused(call_kind::write, ENOSPC)) return real(bytes, size, count, file);
  mark_failed(file);
  return 0;
}

int fflush(std::FILE* file) {
  static const behind<decltype(fflush)> real("fflush");
  if (!refused(call_kind::write, ENOSPC)) return real(file);
  if (file) mark_failed(file);
  return EOF;
}

// A close that fails has closed all the same.
int close(int descriptor) {
  static const behind<decltype(close)> real("close");
  const int result = real(descriptor);
  forget(static_cast<std::uint64_t>(descriptor), false);
  return refused(call_kind::close, EIO) ? -1 : result;
}

int fclose(std::FILE* file) {
  static const behind<decltype(fclose)> real("fclose");
  forget(static_cast<std::uint64_t>(fileno(file)), false);
  const int result = real(file);
  return refused(call_kind::close, EIO) ? EOF : result;
}

int closedir(DIR* folder) {
  static const behind<decltype(closedir)> real("closedir");
  forget(static_cast<std::uint64_t>(dirfd(folder)), false);
  const int result = real(folder);
  return refused(call_kind::close, EIO) ? -1 : result;
}

DIR* opendir(const char* path) {
  static const behind<decltype(opendir)> real("opendir");
  if (refused(call_kind::list, EMFILE)) return nullptr;
  DIR* const folder = real(path);
  if (folder) remember(static_cast<std::uint64_t>(dirfd(folder)), false);
  return folder;
}

dirent* readdir(DIR* folder) {
  static const behind<decltype(readdir)> real("readdir");
  return refused(call_kind::list, EIO) ? nullptr : real(folder);
}

int rename(const char* from, const char* to) {
  static const behind<decltype(rename)> real("rename");
  return refused(call_kind::change, EACCES) ? -1 : real(from, to);
}

int mkdir(const char* path, mode_t mode) {
  static const behind<decltype(mkdir)> real("mkdir");
  return refused(call_kind::change, EACCES) ? -1 : real(path, mode);
}

int unlink(const char* path) {
  static const behind<decltype(unlink)> real("unlink");
  return refused(call_kind::change, EACCES) ? -1 : real(path);
}

int remove(const char* path) {
  static const behind<decltype(remove)> real("remove");
  return refused(call_kind::change, EACCES) ? -1 : real(path);
}

int stat(const char* path, struct stat* facts) {
  static const behind<int(const char*, struct stat*)> real("stat");
  return refused(call_kind::change, EACCES) ? -1 : real(path, facts);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) {
  static const behind<decltype(pthread_create)> real("pthread_create");
  return refused(call_kind::thread, EAGAIN) ? EAGAIN : real(thread, attributes, body, argument);
}

}  // extern "C"
