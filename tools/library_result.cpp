#include "tools/library_result.h"

#include "include/oc_pan_cal.h"

namespace ocpan {

std::string_view meaning_of(int result) {
  switch (result) {
    case OCPAN_SUCCESS:
      return "success";
    case OCPAN_RESERVED:
      return "a camera of the configuration is incomplete";
    case OCPAN_INPUT:
      return "an input can't be opened, or a picture is unusable";
    case OCPAN_OUTPUT:
      return "an output can't be opened or written";
    case OCPAN_MALFORMED:
      return "the content of an input is malformed or incomplete";
    case OCPAN_MEMORY:
      return "out of memory";
    case OCPAN_INVALID:
      return "an argument or a value is out of range";
    default:
      return "internal failure";
  }
}

}  // namespace ocpan
