#include "calfiles/pt_cal.h"

#include <algorithm>
#include <cmath>

#include <Eigen/LU>

#include "calfiles/polynomial_roots.h"
#include "calfiles/truncated.h"
#include "model/resize.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

using Eigen::Index;

constexpr double beyond_lens = 1000.0;  // throws a point far outside every picture
constexpr double smallest_angle = 1e-5;

// The lengths that both mappings use.
struct pt_scales {
  pt_scales(const pt_project& project, const pt_image& image)
      : pano(project.pano_size[0] / project.pano_hfov),
        ratio((image.projection == 0 ? image.crop_size[0] / (2 * std::tan(image.hfov / 2))
                                     : image.crop_size[0] / image.hfov) /
              pano),
        half_side(0.5 * std::min(image.crop_size[0], image.crop_size[1])) {}
  double pano;       // pixels of the panorama per radian
  double ratio;      // pixels of the picture per pixel of the panorama
  double half_side;  // pixels, the unit of the lens polynomial's radius
};

double length(double x, double y) { return std::sqrt(x * x + y * y); }

// Turns directions into the camera and onto the equidistant plane.
//
//   plane        N x 2, pixels of the panorama
//   directions   N x 3
void to_plane(Eigen::MatrixXd& plane, const Eigen::MatrixXd& directions,
              const Eigen::Matrix3d& rotation, double pano_scale) {
  const Eigen::Matrix3d& r = rotation;
  const Index count = directions.rows();
  const double* px = directions.data();
  const double* py = px + count;
  const double* pz = py + count;
  double* x_out = plane.data();
  double* y_out = x_out + count;
  for (Index i = 0; i < count; ++i) {
    const double x = px[i] * r(0, 0) + py[i] * r(1, 0) + pz[i] * r(2, 0);
    const double y = px[i] * r(0, 1) + py[i] * r(1, 1) + pz[i] * r(2, 1);
    const double z = px[i] * r(0, 2) + py[i] * r(1, 2) + pz[i] * r(2, 2);
    const double rho = length(x, y);
    const double factor = std::atan2(rho, z) * pano_scale / rho;
    x_out[i] = x * factor;
    y_out[i] = y * factor;
  }
}

// Bends the equidistant plane into the rectilinear one.
void to_rectilinear(Eigen::MatrixXd& plane, double pano_scale) {
  const double half_pi = std::acos(0.0);
  for (Index i = 0; i < plane.rows(); ++i) {
    const double u = std::min(length(plane(i, 0), plane(i, 1)) / pano_scale, half_pi);
    if (u <= smallest_angle) continue;
    plane.row(i) *= std::tan(u) / u;
  }
}

// Takes positions from the plane to pixels of the picture.
void to_pixels(Eigen::MatrixXd& plane, const pt_image& image, const pt_scales& scales) {
  const Eigen::Matrix2d& shear = image.shear_matrix;
  const double a = image.lens[0], b = image.lens[1], c = image.lens[2], d = image.lens[3];
  const double shift_x = image.shift[0], shift_y = image.shift[1];
  const double s00 = shear(0, 0), s01 = shear(0, 1), s10 = shear(1, 0), s11 = shear(1, 1);
  const double middle_x = 0.5 * image.size[0], middle_y = 0.5 * image.size[1];
  const double ratio = scales.ratio, half_side = scales.half_side, limit = image.radius_limit;
  const Index count = plane.rows();
  double* x_out = plane.data();
  double* y_out = x_out + count;
  for (Index i = 0; i < count; ++i) {
    double x = x_out[i] * ratio, y = y_out[i] * ratio;
    const double s = length(x, y) / half_side;
    const double factor = s < limit ? ((a * s + b) * s + c) * s + d : beyond_lens;
    x = x * factor + shift_x;
    y = y * factor + shift_y;
    x_out[i] = (x * s00 + y * s10) + middle_x - 0.5;
    y_out[i] = (x * s01 + y * s11) + middle_y - 0.5;
  }
}

// The factor that takes a point from behind the lens to before it.
//
//   s   the distorted radius; at 0 the centre stays the centre
double lens_inversion(const Eigen::Vector4d& lens, double s) {
  if (s == 0) return 1;
  const std::vector<double> roots = real_roots({-s, lens[3], lens[2], lens[1], lens[0]});
  if (roots.empty()) return beyond_lens;
  const double nearest = *std::min_element(
      roots.begin(), roots.end(),
      [&](double left, double right) { return std::abs(left - s) < std::abs(right - s); });
  return nearest / s;
}

Eigen::RowVector3d direction_of(const Eigen::RowVector2d& pixel, const pt_image& image,
                                const Eigen::Matrix2d& unshear, const pt_scales& scales) {
  Eigen::RowVector2d v = pixel;
  v.array() += 0.5;
  v -= 0.5 * image.size.transpose();
  v = (v * unshear).eval();
  v -= image.shift.transpose();
  v *= lens_inversion(image.lens, length(v[0], v[1]) / scales.half_side);
  v /= scales.ratio;
  if (image.projection == 0) {
    const double u = length(v[0], v[1]) / scales.pano;
    if (!(u <= smallest_angle)) v *= std::atan(u) / u;
  }
  const double r = length(v[0], v[1]);
  const double u = r / scales.pano;
  const double w = r <= smallest_angle ? 0 : std::sin(u) / r;
  return Eigen::RowVector3d(v[0] * w, v[1] * w, std::cos(u)) * image.rotation.transpose();
}

}  // namespace

int pt_cal::load(const char* file_name) { return read_project_file(project_, file_name); }

bool pt_cal::knows(std::uint64_t camera, const char* complaint) const {
  if (camera < cam_count()) return true;
  print_line(complaint, camera);
  return false;
}

int pt_cal::cam_width(std::uint64_t camera) const {
  if (!knows(camera, "pt_cal::cam_width() invalid camera id: ")) return -1;
  return truncated(project_.images[camera].size[0]);
}

int pt_cal::cam_height(std::uint64_t camera) const {
  if (!knows(camera, "pt_cal::cam_height() invalid camera id: ")) return -1;
  return truncated(project_.images[camera].size[1]);
}

int pt_cal::cam_lens(std::uint64_t camera) const {
  if (!knows(camera, "pt_cal::cam_lens() invalid camera id: ")) return -1;
  print_line("pt_cal::cam_lens() function not implemented: ", camera);
  return -1;
}

int pt_cal::cam_hfov(std::uint64_t camera) const {
  if (!knows(camera, "pt_cal::cam_hfov() invalid camera id: ")) return -1;
  print_line("pt_cal::cam_hfov() function not implemented: ", camera);
  return -1;
}

bool pt_cal::can_map(std::uint64_t camera) const {
  if (camera < cam_count()) return true;
  print_line("Number cameras must be in range 0..", cam_count(), ", got: ", camera);
  return false;
}

int pt_cal::cam_project(const std::vector<point_block>& directions, std::uint64_t camera,
                        std::vector<point_block>& pixels) const {
  if (!can_map(camera)) return code::argument_invalid;
  const pt_image& image = project_.images[camera];
  const pt_scales scales(project_, image);
  pixels.reserve(pixels.size() + directions.size());
  for (const point_block& face : directions) {
    point_block& out = pixels.emplace_back();
    for (std::size_t row = 0; row < face.size(); ++row) {
      out[row].resize(face[row].rows(), 2);
      to_plane(out[row], face[row], image.rotation, scales.pano);
      if (image.projection == 0) to_rectilinear(out[row], scales.pano);
      to_pixels(out[row], image, scales);
    }
  }
  return code::success;
}

int pt_cal::cam_unproject(Eigen::MatrixX3d& points, const Eigen::MatrixX2d& pixels,
                          std::uint64_t camera) const {
  if (!can_map(camera)) return code::argument_invalid;
  const pt_image& image = project_.images[camera];
  const pt_scales scales(project_, image);
  const Eigen::Matrix2d unshear = image.shear_matrix.inverse();
  resize(points, pixels.rows(), 3);
  for (Index i = 0; i < pixels.rows(); ++i) {
    points.row(i) = direction_of(pixels.row(i), image, unshear, scales);
  }
  return code::success;
}

}  // namespace ocpan
