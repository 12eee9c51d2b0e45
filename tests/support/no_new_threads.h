#pragma once

#include <cstdlib>

#ifdef __GLIBC__
#include <pthread.h>

namespace ocpan::testing {

// While it lives no thread can be started: the default stack is larger than any address
// space.
class no_new_threads {
 public:
  no_new_threads() {
    pthread_getattr_default_np(&before_);
    pthread_attr_t huge;
    pthread_attr_init(&huge);
    pthread_attr_setstacksize(&huge, std::size_t{1} << 60);
    pthread_setattr_default_np(&huge);
    pthread_attr_destroy(&huge);
  }
  ~no_new_threads() {
    pthread_setattr_default_np(&before_);
    pthread_attr_destroy(&before_);
  }
  no_new_threads(const no_new_threads&) = delete;
  no_new_threads& operator=(const no_new_threads&) = delete;

 private:
  pthread_attr_t before_;
};

}  // namespace ocpan::testing
#endif
