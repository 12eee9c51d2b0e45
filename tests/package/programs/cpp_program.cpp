// A C++ program that uses the library through its public header alone.
#include <cmath>
#include <iostream>

#include "oc_pan_cal.h"

namespace {

int failures = 0;

void expect(bool holds, const char* what) {
  if (holds) return;
  std::cout << "not so: " << what << "\n";
  ++failures;
}

}  // namespace

int main() {
  const char* no_picture = "no_picture.png";
  const char* no_mask = "no_mask.bin";
  expect(ocPAN_MaskTransform(1, &no_picture, &no_mask) == OCPAN_MALFORMED,
         "a picture that is missing is told of");
  expect(ocPAN_MaskTransform(9, &no_picture, &no_mask) == OCPAN_INVALID, "nine masks are too many");

  // Half away from zero by floor(x + 0.5) would make 1 of the first.
  volatile double below_half = 0.49999999999999994;
  volatile double two_and_a_half = 2.5;
  expect(std::round(below_half) == 0.0 && ::round(below_half) == 0.0,
         "the program's round() is the C library's");
  expect(std::round(two_and_a_half) == 3.0, "a half is rounded away from zero");
  return failures == 0 ? 0 : 1;
}
