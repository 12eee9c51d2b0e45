#include "fuzz/board_pictures.h"

#include <cmath>
#include <cstddef>

namespace ocpan::fuzz {
namespace {

constexpr int width = 96;
constexpr int height = 72;
constexpr int samples = 4;        // of a pixel, per side
constexpr double half_board = 2;  // cells

bool is_black(double u, double v) {
  if (std::abs(u) >= half_board || std::abs(v) >= half_board) return false;
  return std::fmod(std::floor(u) + std::floor(v) + 2 * half_board, 2.0) == 0;
}

}  // namespace

std::string board_picture(double turn, double x, double y, double cell, double perspective) {
  std::string picture = "P5 " + std::to_string(width) + " " + std::to_string(height) + " 255\n";
  const double cosine = std::cos(turn), sine = std::sin(turn);
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column) {
      int white = 0;
      for (int k = 0; k < samples * samples; ++k) {
        const int down = k / samples;
        const double dx = column + (k % samples + 0.5) / samples - 0.5 - x;
        const double dy = row + (down + 0.5) / samples - 0.5 - y;
        const double here = cell * (1 + perspective * dx);
        const double u = (cosine * dx + sine * dy) / here;
        const double v = (cosine * dy - sine * dx) / here;
        white += is_black(u, v) ? 0 : 1;
      }
      picture += static_cast<char>(20 + 220 * white / (samples * samples));
    }
  }
  return picture;
}

}  // namespace ocpan::fuzz
