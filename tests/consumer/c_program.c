/* A C11 program that uses the library through its public header alone. */
#include <stdio.h>
#include <string.h>

#include "oc_pan_cal.h"

static int failures = 0;

static void expect(int holds, const char* what) {
  if (!holds) {
    printf("not so: %s\n", what);
    ++failures;
  }
}

int main(void) {
  char version[128] = "";
  expect(ocPAN_Version(version) == OCPAN_SUCCESS, "ocPAN_Version succeeds");
  /* Written out once, so that nobody changes the promised text in passing. */
  expect(strcmp(version, "V1.5.2") == 0, "the version is V1.5.2");
  expect(ocPAN_Version(NULL) == OCPAN_FAILURE, "ocPAN_Version refuses a null buffer");

  qa_summary summary;
  expect(ocPAN_Cal(NULL, &summary) == OCPAN_INVALID, "ocPAN_Cal refuses a null name");
  expect(sizeof summary == 5 * sizeof(double), "qa_summary is five doubles");

  /* Half away from zero by floor(x + 0.5) would make 1 of this. */
  volatile double below_half = 0.49999999999999994;
  expect(round(below_half) == 0.0, "the program's round() is the C library's");
  return failures == 0 ? 0 : 1;
}
