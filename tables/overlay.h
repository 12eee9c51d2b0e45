#pragma once

namespace ocpan {

// Unrolls a square picture into a rectangle: columns sweep the full circle, rows go from
// the square's rim to its centre. Column 0 lies a quarter turn from the positive x axis and
// the angle grows towards y; what lies outside the inscribed circle is lost.
//
//   input_file, output_file   pictures in any format that OpenCV knows by the file's ending;
//                             null is refused
//   width, height             pixels of the output, 17 to 16384 each
//
// The output is emptied before the input is read, so they can't be the same file. Whether
// it could be written is not tested. Returns an exported code.
[[nodiscard]] int create_overlay(const char* input_file, const char* output_file, int width,
                                 int height);

}  // namespace ocpan
