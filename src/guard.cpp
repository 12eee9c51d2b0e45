#include "src/guard.h"

#include <new>
#include <string>

#include <opencv2/core.hpp>

#include "include/oc_pan_cal.h"
#include "src/console.h"

namespace ocpan {
namespace {

void report(const char* what) noexcept {
  try {
    std::string text = what;
    for (char& c : text) {
      if (c == '\n' || c == '\r') c = ' ';
    }
    print_line("Unexpected failure: ", text);
  } catch (...) {  // the output stream itself fails: nobody is left to tell
  }
}

}  // namespace

int code_of_current_exception() noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return OCPAN_MEMORY;
  } catch (const cv::Exception& failure) {
    if (failure.code == cv::Error::StsNoMem) return OCPAN_MEMORY;
    report(failure.what());
  } catch (const std::exception& failure) {
    report(failure.what());
  } catch (...) {
    report("unknown exception");
  }
  return OCPAN_FAILURE;
}

}  // namespace ocpan
