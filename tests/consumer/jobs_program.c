/* One job of each kind through the public header alone, for a comparison of two systems:
 *
 *   consumer_jobs CONFIGURATION CALIBRATION MASK_PREFIX TO_REFINE PICTURE...
 *
 * calibrates; makes the tables and polygons of CALIBRATION in the working folder, and raw
 * masks; refines TO_REFINE with the pictures of a fixture of one metre. Prints each number
 * that a job returns with all its digits.
 */
#include <stdio.h>

#include "oc_pan_cal.h"

static int failures = 0;

static void ended(const char* job, int result) {
  printf("%s.result %d\n", job, result);
  if (result != OCPAN_SUCCESS) ++failures;
}

static void number(const char* name, double value) { printf("%s %.17g\n", name, value); }

static void calibrate(const char* configuration) {
  qa_summary summary = {0, 0, 0, 0, 0};
  ended("cal", ocPAN_Cal(configuration, &summary));
  number("cal.max_reprojection_error", summary.max_reprojection_error);
  number("cal.average_reprojection_error", summary.average_reprojection_error);
  number("cal.matched_point_count", summary.matched_point_count);
  number("cal.total_dist_ratio", summary.total_dist_ratio);
  number("cal.minimum_dist_ratio", summary.minimum_dist_ratio);
}

static void make_tables(const char* calibration, const char* mask_prefix) {
  ended("lut", ocPAN_LutFromCalibration(calibration, mask_prefix, "lut", 10.0f, 0, 1));
  ended("poly", ocPAN_PolyFromCalibration(calibration, mask_prefix, "poly", 10.0f, 1));
}

static void transform_mask(const char* mask_prefix) {
  char mask[256];
  snprintf(mask, sizeof mask, "%s_0.png", mask_prefix);
  const char* inputs[1] = {mask};
  const char* outputs[1] = {"mask_0.bin"};
  ended("mask", ocPAN_MaskTransform(1, inputs, outputs));
}

static void refine(const char* calibration, int count, char** pictures) {
  double results[3] = {0, 0, 0};
  ended("prod", ocPAN_CalProd((unsigned int)count, calibration, "refined.cal", 1.0f,
                              (const char* const*)pictures, results));
  number("prod.max_reprojection_error", results[0]);
  number("prod.mean_reprojection_error", results[1]);
  number("prod.point_count", results[2]);
}

int main(int argc, char** argv) {
  if (argc < 7) {
    fputs("usage: consumer_jobs CONFIGURATION CALIBRATION MASK_PREFIX TO_REFINE PICTURE...\n",
          stderr);
    return 64;
  }
  calibrate(argv[1]);
  make_tables(argv[2], argv[3]);
  transform_mask(argv[3]);
  refine(argv[4], argc - 5, argv + 5);
  return failures == 0 ? 0 : 1;
}
