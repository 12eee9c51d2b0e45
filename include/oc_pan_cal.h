/* Offline calibration of multi-camera panorama rigs.
 *
 * A plain C interface, usable from C11 and C++. Each call runs its whole job on the
 * caller's thread, prints progress and complaints on the standard output stream, writes
 * its files and returns one of the codes below. Nothing survives a call but its files.
 *
 * Two calls must not run at once: they share the output stream and the folder ".\tmp\"
 * under the working directory, which the caller provides (debug pictures go there; when
 * it is missing they are left out).
 *
 * Paths may use "/" or backslashes. On POSIX systems each backslash becomes "/" where a
 * file is opened, so a name that really holds a backslash can't be opened.
 *
 * The library also exports round(), declared by <math.h>, which rounds half away from
 * zero as floor(x + 0.5) above zero and ceil(x - 0.5) otherwise. A program that links
 * the C math library ahead of this one keeps the C library's round(); ours is reached
 * with dlsym() or GetProcAddress().
 */
#ifndef OC_PAN_CAL_H
#define OC_PAN_CAL_H

#include <math.h>

#if defined(_WIN32)
#if defined(OCPAN_BUILDING_LIBRARY)
#define OCPAN_API __declspec(dllexport)
#else
#define OCPAN_API __declspec(dllimport)
#endif
#else
#define OCPAN_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* What every function but round() returns. */
enum ocpan_result {
  OCPAN_FAILURE = -1,  /* internal failure, or a null buffer given to ocPAN_Version */
  OCPAN_SUCCESS = 0,   /* the job is done and its files are written */
  OCPAN_RESERVED = 1,  /* a configuration whose first incomplete camera lacks its width */
  OCPAN_INPUT = 2,     /* an input can't be opened, or a picture is unusable */
  OCPAN_OUTPUT = 3,    /* an output can't be opened or written */
  OCPAN_MALFORMED = 4, /* the content of an input is malformed or incomplete */
  OCPAN_MEMORY = 5,    /* out of memory */
  OCPAN_INVALID = 6    /* an argument or a value is out of range */
};

/* The measures of a calibration. */
typedef struct qa_summary {
  double max_reprojection_error;     /* pixels, the worst used corner */
  double average_reprojection_error; /* pixels, mean over the used corners */
  double matched_point_count;        /* corners used, an integer */
  double total_dist_ratio;           /* depth cover of all boards, larger is better */
  double minimum_dist_ratio;         /* the smallest such ratio of a set */
} qa_summary;

/* Calibrates a rig from series of chessboard pictures.
 *
 *   config_file   a text file that names the pictures, the cameras, the boards and the
 *                 output; docs/configuration.md tells its form
 *   summary       receives the measures, also after a failed run (zeros then, as a rule);
 *                 null: nothing is copied
 *
 * Writes the calibration file under the configuration's output_filename, beside it the
 * reports "<output>_distance.csv" and "<output>_QA_Measures.txt", and a debug picture of
 * each board under ".\tmp\" if that folder exists. A frame without a board is no failure.
 *
 * Returns OCPAN_INVALID if config_file is null or the configuration holds fewer than 2 or
 * more than 8 cameras (also when it can't be opened), OCPAN_MALFORMED, OCPAN_INPUT or
 * OCPAN_RESERVED for what is wrong in it, OCPAN_OUTPUT if the calibration file can't be
 * written; the printed lines say why. Reports that can't be written fail nothing.
 */
OCPAN_API int ocPAN_Cal(const char* config_file, qa_summary* summary);

/* Refines a calibration on the production line, from one picture per camera taken inside a
 * sphere with a checker pattern. The rig stands at the sphere's centre, and neighbouring
 * pictures must overlap. Nobody else may call the C library's rand() meanwhile if the same
 * pictures are to give the same result.
 *
 *   camera_count       2 to 8, the number of cameras in the calibration
 *   calibration_path   a file of ocPAN_Cal, lengths in millimetres
 *   output_path        the refined calibration, written only on success
 *   fixture_radius     0.2 to 20, metres
 *   image_paths        camera_count pictures in camera order, of the calibration's sizes
 *   results            out, 3 numbers: the largest and the mean reprojection error in
 *                      pixels, and the number of samples, two per matched point, one in
 *                      each of its cameras; to be read only on success; null if nobody
 *                      wants them
 *
 * Writes debug pictures and the report "Prod_QA_Measures.txt" to ".\tmp\".
 *
 * OCPAN_FAILURE: a picture without a corner of the pattern, or a camera that nothing seen
 * connects with the first one. A search that finds no agreement doesn't fail: judge the
 * result by its errors.
 */
OCPAN_API int ocPAN_CalProd(unsigned int camera_count, const char* calibration_path,
                            const char* output_path, float fixture_radius,
                            const char* const* image_paths, double* results);

/* Makes the lookup table of every camera for the stitching device: for each direction of a
 * cube around the rig the position in the camera's picture and the camera's weight there.
 * Prints nothing unless it fails. Stops at the first camera that fails; the files of those
 * before it stand.
 *
 *   cal_file_name    the calibration
 *   mask_prefix      the masks are mask_prefix_0.png, mask_prefix_1.png ... of the cameras'
 *                    sizes; pixels above 128 are the camera's region
 *   output_prefix    the tables are output_prefix_0.bin ..., 4194304 bytes each
 *   sphere_radius    how far the panorama's content is taken to be, in units of 1000 units
 *                    of the calibration; at least 0.5 where use_file_class is 1
 *   small_face       nonzero: 129 samples across a cube face, otherwise 253
 *   use_file_class   nonzero: the calibration is a file of ocPAN_Cal, otherwise a
 *                    panorama project file, to which the radius is nothing
 */
OCPAN_API int ocPAN_LutFromCalibration(const char* cal_file_name, const char* mask_prefix,
                                       const char* output_prefix, float sphere_radius,
                                       int small_face, int use_file_class);

/* Makes the polygon of every camera for the stitching device: 128 directions around all that
 * its mask covers, a little enlarged. As ocPAN_LutFromCalibration, but for:
 *
 *   mask_prefix      all pixels above 0 count; a mask without one gives OCPAN_MALFORMED
 *   output_prefix    the polygons are output_prefix_0.bin ..., 1536 bytes each
 */
OCPAN_API int ocPAN_PolyFromCalibration(const char* cal_file_name, const char* mask_prefix,
                                        const char* output_prefix, float sphere_radius,
                                        int use_file_class);

/* Unrolls a square picture into a rectangle: columns sweep the full circle from a quarter
 * turn on, rows go from the inscribed circle to the centre. The corners are lost.
 *
 *   input_file    a square picture in any format that OpenCV reads
 *   output_file   the rectangle, in the format of its ending (".png"); a place that can't
 *                 be written to goes unreported. It is emptied before the input is read,
 *                 so it can't be the input file
 *   width         17 to 16384 pixels
 *   height        17 to 16384 pixels
 *
 * OCPAN_INPUT: no picture in input_file. OCPAN_INVALID: a size out of range, a null name,
 * a picture that isn't square. OCPAN_FAILURE: the ending of output_file is unknown, or the
 * input is too large for OpenCV, a side of 32767 pixels or more or a header that it refuses
 * (60000 by 60000); the output is left empty then.
 */
OCPAN_API int ocPAN_CreateOsd(const char* input_file, const char* output_file, int width,
                              int height);

/* Turns mask pictures into raw weight masks. Each is one file of the picture's size: row
 * after row of 16-bit little-endian samples without a header, 0 outside the mask and up to
 * 1023 at its deepest point. Pixels whose grey is above 128 are the mask, and all beyond
 * the picture is outside.
 *
 *   count          1 to 8
 *   input_files    count names of pictures in any format that OpenCV reads
 *   output_files   count names of masks, replaced
 *
 * Ends at the first failure; the masks written before stay. OCPAN_MALFORMED: an input that
 * is missing or no picture. OCPAN_OUTPUT: an output that can't be opened, or no memory for
 * it. OCPAN_INPUT: a mask that can't be written. OCPAN_INVALID: the count, or a null name.
 */
OCPAN_API int ocPAN_MaskTransform(int count, const char* const* input_files,
                                  const char* const* output_files);

/* Writes the version, "V" and three numbers with dots between, into buffer.
 *
 *   buffer   at least 128 bytes; null gives OCPAN_FAILURE
 */
OCPAN_API int ocPAN_Version(char* buffer);

#ifdef __cplusplus
}
#endif

#endif
