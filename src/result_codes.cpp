#include "src/result_codes.h"

#include "include/oc_pan_cal.h"

namespace ocpan {

int map_result(int internal_code) {
  switch (internal_code) {
    case code::success:
      return OCPAN_SUCCESS;
    case 1:
      return OCPAN_RESERVED;
    case code::input_unusable:
      return OCPAN_INPUT;
    case code::output_unopened:
      return OCPAN_OUTPUT;
    case code::content_malformed:
      return OCPAN_MALFORMED;
    case code::out_of_memory:
      return OCPAN_MEMORY;
    case code::argument_invalid:
      return OCPAN_INVALID;
    default:
      return OCPAN_FAILURE;
  }
}

}  // namespace ocpan
