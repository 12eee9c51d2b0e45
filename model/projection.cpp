#include "model/projection.h"

#include <algorithm>
#include <cmath>

#include <Eigen/Geometry>

namespace ocpan {
namespace {

using Eigen::Index;
using Eigen::Vector3d;

constexpr double law_threshold = 1e-8;  // |L| below it takes the branch of its own
constexpr Index block_size = 64;        // points carried through the stages together

double clamp_passing_nan(double value, double low, double high) {
  return value < low ? low : (value > high ? high : value);
}

// The quantities of one block of points on their way to pixels. Plain arrays, so that the
// loops over them have no calls but the elementary functions.
struct projection_block {
  using values = double[block_size];
  values dx, dy, dz;  // D = P - C
  values lx, ly, lz;  // lam, the part of D across O
  values zeta, m;     // the part along O, the length of lam
  values theta, chi, mu;
  values sine, cosine;   // of L theta
  values qx, qy, qz, a;  // Q and Q.A
  values zeta2;
};

struct rigid_motion {
  Eigen::Matrix3d rotation;
  Vector3d translation;
};

void to_axis_coordinates(projection_block& b, const double* points, Index count,
                         const rigid_motion& motion, const camera_frame& camera) {
  const Eigen::Matrix3d& r = motion.rotation;
  const double r00 = r(0, 0), r01 = r(0, 1), r02 = r(0, 2);
  const double r10 = r(1, 0), r11 = r(1, 1), r12 = r(1, 2);
  const double r20 = r(2, 0), r21 = r(2, 1), r22 = r(2, 2);
  const double tx = motion.translation.x(), ty = motion.translation.y(),
               tz = motion.translation.z();
  const double cx = camera.centre.x(), cy = camera.centre.y(), cz = camera.centre.z();
  const double ox = camera.distortion_axis.x(), oy = camera.distortion_axis.y(),
               oz = camera.distortion_axis.z();
  for (Index i = 0; i < count; ++i) {
    const double px = points[3 * i], py = points[3 * i + 1], pz = points[3 * i + 2];
    b.dx[i] = ((r00 * px + r01 * py + r02 * pz) + tx) - cx;
    b.dy[i] = ((r10 * px + r11 * py + r12 * pz) + ty) - cy;
    b.dz[i] = ((r20 * px + r21 * py + r22 * pz) + tz) - cz;
    b.zeta[i] = b.dx[i] * ox + b.dy[i] * oy + b.dz[i] * oz;
    b.lx[i] = b.dx[i] - b.zeta[i] * ox;
    b.ly[i] = b.dy[i] - b.zeta[i] * oy;
    b.lz[i] = b.dz[i] - b.zeta[i] * oz;
    b.m[i] = b.lx[i] * b.lx[i] + b.ly[i] * b.ly[i] + b.lz[i] * b.lz[i];
  }
  for (Index i = 0; i < count; ++i) b.m[i] = std::sqrt(b.m[i]);
}

void angles(projection_block& b, Index count, double law, bool clamped) {
  for (Index i = 0; i < count; ++i) b.theta[i] = std::atan2(b.m[i], b.zeta[i]);
  if (clamped) {
    const double reach = pi / (2 * std::abs(law));
    for (Index i = 0; i < count; ++i) b.theta[i] = clamp_passing_nan(b.theta[i], -reach, reach);
  }
}

// chi of theta. The max folds tan(L theta) / L for L above 0 and sin(L theta) / L below it
// into one line. Close to 0 the sine really stands in the denominator.
void apply_law(projection_block& b, Index count, double law) {
  if (!(std::abs(law) < law_threshold)) {  // not-a-number passes through the sine
    for (Index i = 0; i < count; ++i) {
      const double bent = law * b.theta[i];
      b.sine[i] = std::sin(bent);
      b.chi[i] = b.sine[i] / (law * std::cos(std::max(0.0, bent)));
    }
  } else {
    for (Index i = 0; i < count; ++i) {
      b.chi[i] = b.theta[i] / std::sin(std::max(0.0, law * b.theta[i]));
    }
  }
}

void to_pixels(projection_block& b, Index count, const camera_frame& camera, bool clamped,
               double* x_out, double* y_out) {
  const Vector3d o = camera.distortion_axis;
  const Vector3d axis = camera.axis;
  const Vector3d h = camera.horizontal;
  const Vector3d v = camera.vertical;
  const double r0 = camera.r0, r1 = camera.r1, r2 = camera.r2;
  for (Index i = 0; i < count; ++i) b.zeta2[i] = b.m[i] / b.chi[i];  // chi ahead of its clamp
  if (clamped) {
    for (Index i = 0; i < count; ++i) {
      b.chi[i] = clamp_passing_nan(b.chi[i], -camera.chi_limit, camera.chi_limit);
    }
  }
  for (Index i = 0; i < count; ++i) {
    const double chi2 = b.chi[i] * b.chi[i];
    b.mu[i] = r0 + r1 * chi2 + r2 * (chi2 * chi2);
    b.qx[i] = (1 + b.mu[i]) * b.lx[i] + b.zeta2[i] * o.x();
    b.qy[i] = (1 + b.mu[i]) * b.ly[i] + b.zeta2[i] * o.y();
    b.qz[i] = (1 + b.mu[i]) * b.lz[i] + b.zeta2[i] * o.z();
    b.a[i] = b.qx[i] * axis.x() + b.qy[i] * axis.y() + b.qz[i] * axis.z();
    const double inverse = 1 / b.a[i];
    x_out[i] = (b.qx[i] * h.x() + b.qy[i] * h.y() + b.qz[i] * h.z()) * inverse;
    y_out[i] = (b.qx[i] * v.x() + b.qy[i] * v.y() + b.qz[i] * v.z()) * inverse;
  }
}

// What the derivatives of both pixel coordinates share, worked out once per block.
struct derivative_block {
  using values = double[block_size];
  values inverse_a;
  values chi_by_theta, chi_by_lambda, mu_by_chi;
  values theta_by_m, theta_by_zeta;  // of atan2(m, zeta)
  values inverse_m, inverse_chi;
};

// Of chi by theta, and by LAMBDA with theta held.
void law_derivatives(derivative_block& d, const projection_block& b, Index count, double law) {
  if (law >= law_threshold) {
    const double twice_cubed = 2 * law * law * law;
    for (Index i = 0; i < count; ++i) {
      const double square = b.cosine[i] * b.cosine[i];
      d.chi_by_theta[i] = 1 / square;
      d.chi_by_lambda[i] = (law * b.theta[i] / square - b.sine[i] / b.cosine[i]) / twice_cubed;
    }
  } else if (-law >= law_threshold) {
    const double cubed = law * law * law;
    for (Index i = 0; i < count; ++i) {
      d.chi_by_theta[i] = b.cosine[i];
      d.chi_by_lambda[i] = (b.sine[i] - law * b.theta[i] * b.cosine[i]) / cubed;
    }
  } else {
    for (Index i = 0; i < count; ++i) {
      const double theta = b.theta[i];
      d.chi_by_theta[i] = law > 0 ? 1 / (b.cosine[i] * b.cosine[i]) : b.cosine[i];
      d.chi_by_lambda[i] = theta * theta * theta / 3;
    }
  }
}

void shared_derivatives(derivative_block& d, projection_block& b, Index count,
                        const camera_frame& camera) {
  const double law = camera.law, r1 = camera.r1, r2 = camera.r2;
  for (Index i = 0; i < count; ++i) {
    const double bent = law * b.theta[i];
    b.sine[i] = std::sin(bent);
    b.cosine[i] = std::cos(bent);
  }
  law_derivatives(d, b, count, law);
  for (Index i = 0; i < count; ++i) {
    const double chi = b.chi[i];
    d.mu_by_chi[i] = 2 * r1 * chi + 4 * r2 * (chi * chi * chi);
    const double square = b.m[i] * b.m[i] + b.zeta[i] * b.zeta[i];
    d.theta_by_m[i] = b.zeta[i] / square;
    d.theta_by_zeta[i] = -b.m[i] / square;
    d.inverse_m[i] = 1 / b.m[i];
    d.inverse_chi[i] = 1 / chi;
    d.inverse_a[i] = 1 / b.a[i];
  }
}

// The derivatives of one block. They are worked out side by side in here and then go to the
// map column by column: columns a multiple of 4096 bytes apart share a few lines of the
// cache, which points that come in large numbers would fight for.
struct derivative_columns {
  double column[T_2 + 1][block_size];

  void store(derivative_map& map, Index start, Index count) const {
    for (int key = 0; key <= T_2; ++key) {
      if (!derivative_map::contains(key)) continue;
      std::copy_n(column[key], count, map[key].data() + start);
    }
  }
};

// The derivatives of one pixel coordinate x = (Q.S) / (Q.A), S being H or V.
//
//   scale_first   H_0 or V_0, the keys of S; other_first the one that plays no part
//
// With g = (S - x A) / a, dx = g.dQ, and Q = (1 + mu) lam + zeta2 O gives
// g.dQ = (1 + mu) g.dlam + (g.lam) dmu + (g.O) dzeta2 + zeta2 g.dO.
void coordinate_derivatives(derivative_columns& out, const projection_block& b,
                            const derivative_block& d, const double* points, Index count,
                            const camera_frame& camera, const Vector3d& scale,
                            parameter_name scale_first, parameter_name other_first,
                            const double* coordinate,
                            const std::array<Eigen::Matrix3d, 3>& rotation_by) {
  const Vector3d o = camera.distortion_axis;
  const Vector3d axis = camera.axis;
  const auto& axis_by = camera.axis_by;
  const auto& o_by = camera.distortion_axis_by;
  auto& column = out.column;
  for (Index i = 0; i < count; ++i) {
    const double x = coordinate[i], inverse_a = d.inverse_a[i];
    const double qx = b.qx[i], qy = b.qy[i], qz = b.qz[i];
    const double lx = b.lx[i], ly = b.ly[i], lz = b.lz[i];

    column[scale_first][i] = qx * inverse_a;
    column[scale_first + 1][i] = qy * inverse_a;
    column[scale_first + 2][i] = qz * inverse_a;
    column[other_first][i] = 0;
    column[other_first + 1][i] = 0;
    column[other_first + 2][i] = 0;
    const double by_axis = -x * inverse_a;
    column[A_th][i] = by_axis * (qx * axis_by[0].x() + qy * axis_by[0].y() + qz * axis_by[0].z());
    column[A_ph][i] = by_axis * (qx * axis_by[1].x() + qy * axis_by[1].y() + qz * axis_by[1].z());

    const double gx = (scale.x() - x * axis.x()) * inverse_a;
    const double gy = (scale.y() - x * axis.y()) * inverse_a;
    const double gz = (scale.z() - x * axis.z()) * inverse_a;
    const double g_lam = gx * lx + gy * ly + gz * lz;
    const double g_o = gx * o.x() + gy * o.y() + gz * o.z();

    const double chi = b.chi[i];
    const double chi2 = chi * chi;
    column[rho_0][i] = g_lam;
    column[rho_1][i] = g_lam * chi2;
    column[rho_2][i] = g_lam * (chi2 * chi2);

    // By chi, with lam and m held: mu and zeta2 = m / chi move.
    const double zeta2_by_m = d.inverse_chi[i];
    const double by_chi =
        g_lam * d.mu_by_chi[i] - g_o * b.m[i] * (d.inverse_chi[i] * d.inverse_chi[i]);
    column[LAMBDA][i] = by_chi * d.chi_by_lambda[i];
    const double by_theta = by_chi * d.chi_by_theta[i];
    const double by_m = by_theta * d.theta_by_m[i] + g_o * zeta2_by_m;
    const double by_zeta = by_theta * d.theta_by_zeta[i];

    // By D: dlam = dD - (O.dD) O, dm = lam.dD / m, dzeta = O.dD.
    const double one_mu = 1 + b.mu[i];
    const double along_lam = by_m * d.inverse_m[i];
    const double along_o = by_zeta - one_mu * g_o;
    const double by_dx = one_mu * gx + along_lam * lx + along_o * o.x();
    const double by_dy = one_mu * gy + along_lam * ly + along_o * o.y();
    const double by_dz = one_mu * gz + along_lam * lz + along_o * o.z();
    column[C_0][i] = -by_dx;
    column[C_1][i] = -by_dy;
    column[C_2][i] = -by_dz;
    column[T_0][i] = by_dx;
    column[T_1][i] = by_dy;
    column[T_2][i] = by_dz;

    const double px = points[3 * i], py = points[3 * i + 1], pz = points[3 * i + 2];
    for (int k = 0; k < 3; ++k) {
      const Eigen::Matrix3d& r = rotation_by[static_cast<std::size_t>(k)];
      column[R_0 + k][i] = by_dx * (r(0, 0) * px + r(0, 1) * py + r(0, 2) * pz) +
                           by_dy * (r(1, 0) * px + r(1, 1) * py + r(1, 2) * pz) +
                           by_dz * (r(2, 0) * px + r(2, 1) * py + r(2, 2) * pz);
    }

    // By O: dzeta = D.dO, dlam = -(D.dO) O - zeta dO, dm = lam.dlam / m.
    const double o_lam = o.x() * lx + o.y() * ly + o.z() * lz;
    for (int k = 0; k < 2; ++k) {
      const Vector3d& e = o_by[k];
      const double d_e = b.dx[i] * e.x() + b.dy[i] * e.y() + b.dz[i] * e.z();
      const double g_e = gx * e.x() + gy * e.y() + gz * e.z();
      const double lam_e = lx * e.x() + ly * e.y() + lz * e.z();
      const double g_dlam = -d_e * g_o - b.zeta[i] * g_e;
      const double dm = (-d_e * o_lam - b.zeta[i] * lam_e) * d.inverse_m[i];
      column[O_th + k][i] = one_mu * g_dlam + by_m * dm + by_zeta * d_e + b.zeta2[i] * g_e;
    }
  }
}

}  // namespace

void project_points(Eigen::ArrayXd& x_out, Eigen::ArrayXd& y_out, derivative_map& dx_out,
                    derivative_map& dy_out, const Eigen::Matrix3Xd& points,
                    const camera_frame& camera, const Vector3d& rotation,
                    const Vector3d& translation, bool want_derivatives) {
  const rigid_motion motion{rotation_from_vector(rotation), translation};
  const Index total = points.cols();
  resize(x_out, total, 1);
  resize(y_out, total, 1);
  std::array<Eigen::Matrix3d, 3> rotation_by;
  if (want_derivatives) {
    dx_out.resize(total);
    dy_out.resize(total);
    rotation_by = rotation_derivatives(rotation);
  }

  projection_block b;
  derivative_block d;
  derivative_columns columns;
  for (Index start = 0; start < total; start += block_size) {
    const Index count = std::min(block_size, total - start);
    const double* block_points = points.data() + 3 * start;
    double* x = x_out.data() + start;
    double* y = y_out.data() + start;
    to_axis_coordinates(b, block_points, count, motion, camera);
    angles(b, count, camera.law, !want_derivatives);
    apply_law(b, count, camera.law);
    to_pixels(b, count, camera, !want_derivatives, x, y);
    if (!want_derivatives) continue;
    shared_derivatives(d, b, count, camera);
    coordinate_derivatives(columns, b, d, block_points, count, camera, camera.horizontal, H_0, V_0,
                           x, rotation_by);
    columns.store(dx_out, start, count);
    coordinate_derivatives(columns, b, d, block_points, count, camera, camera.vertical, V_0, H_0, y,
                           rotation_by);
    columns.store(dy_out, start, count);
  }
}

void project_points(Eigen::ArrayXd& x_out, Eigen::ArrayXd& y_out, const Eigen::Matrix3Xd& points,
                    const camera_frame& camera, const Vector3d& rotation,
                    const Vector3d& translation) {
  derivative_map unused;
  project_points(x_out, y_out, unused, unused, points, camera, rotation, translation, false);
}

void unproject_points(Eigen::Matrix3Xd& rays_out, const Eigen::Matrix2Xd& pixels,
                      const camera_frame& camera) {
  const Vector3d& a = camera.axis;
  const Vector3d& o = camera.distortion_axis;
  const double frame_volume = a.dot(camera.vertical.cross(camera.horizontal));
  const Index total = pixels.cols();

  Eigen::Matrix3Xd lam(3, total);
  Eigen::ArrayXd m(total), chi0(total);
  for (Index i = 0; i < total; ++i) {
    const Vector3d g = camera.horizontal - pixels(0, i) * a;
    const Vector3d f = camera.vertical - pixels(1, i) * a;
    const Vector3d w = f.cross(g) / frame_volume;  // w.A = 1 whatever the frame's sign
    const double om = w.dot(o);
    lam.col(i) = w - om * o;
    m[i] = lam.col(i).norm();
    chi0[i] = m[i] / om;
  }

  // Newton on all points together: the converged go on moving until the last one has. A
  // point that is not a number keeps nobody waiting.
  constexpr int most_iterations = 100;
  constexpr double tolerance = 1e-8;
  Eigen::ArrayXd chi = chi0, chi2(total), error(total);
  for (int iteration = 0; iteration < most_iterations; ++iteration) {
    chi2 = chi * chi;
    error = chi * ((1 + camera.r0) + chi2 * (camera.r1 + chi2 * camera.r2)) - chi0;
    double worst = 0;
    for (Index i = 0; i < total; ++i) worst = std::max(worst, std::abs(error[i]));
    if (worst <= tolerance) break;
    chi -= error / ((1 + camera.r0) + chi2 * (3 * camera.r1 + chi2 * (5 * camera.r2)));
  }

  resize(rays_out, 3, total);
  const double law = camera.law;
  for (Index i = 0; i < total; ++i) {
    double theta = chi[i];
    if (std::abs(law) >= law_threshold) {
      theta = law >= 0 ? std::atan(law * chi[i]) / law : std::asin(law * chi[i]) / law;
    }
    rays_out.col(i) = (std::sin(theta) / m[i]) * lam.col(i) + std::cos(theta) * o;
  }
}

}  // namespace ocpan
