#include "production/production_report.h"

#include <algorithm>
#include <limits>
#include <new>

#include "model/projection.h"
#include "platform/text_file.h"

namespace ocpan {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double mm_per_metre = 1000.0;
constexpr const char* report_name = ".\\tmp\\Prod_QA_Measures.txt";

struct tally {
  double sum = 0;
  std::int32_t count = 0;
  double error_max = -infinity;
  double radius_min = infinity;
  double radius_max = -infinity;

  void add_error(double error) {
    sum += error;
    ++count;
    error_max = std::max(error_max, error);
  }
  void add_radius(double radius) {
    radius_min = std::min(radius_min, radius);
    radius_max = std::max(radius_max, radius);
  }
};

// Pixel distances between where a camera of the pair should see the features and did.
Eigen::ArrayXd reprojection_errors(const pair_measurement& measurement, std::size_t side,
                                   const rig& models) {
  const Eigen::Index count = static_cast<Eigen::Index>(measurement.poses.size());
  Eigen::Matrix3Xd features(3, count);
  Eigen::Matrix2Xd seen(2, count);
  for (Eigen::Index k = 0; k < count; ++k) {
    const auto shot = static_cast<std::size_t>(k);
    features.col(k) = measurement.poses[shot].translation;
    seen.col(k) = measurement.shots[shot][side].col(0);
  }
  Eigen::ArrayXd x, y;
  project_points(x, y, features, models[measurement.cameras[side]], Eigen::Vector3d::Zero(),
                 Eigen::Vector3d::Zero());
  return ((x - seen.row(0).transpose().array()).square() +
          (y - seen.row(1).transpose().array()).square())
      .sqrt();
}

template <typename Value>
void add_line(std::ostream& out, const char* text, const Value& value) {
  out << text << value << '\n';
}

void write_total(std::ostream& out, const prod_measures& m) {
  out << " ---------Total QA Measures--------- \n";
  add_line(out, "Average Reprojection Error : ", m.reprojection_mean);
  add_line(out, "Maximum Reprojection Error : ", m.reprojection_max);
  add_line(out, "Matched Point Count        : ", m.point_count);
  add_line(out, "Minimum Point Radius       : ", m.radius_min / mm_per_metre);
  add_line(out, "Maximum Point Radius       : ", m.radius_max / mm_per_metre);
  add_line(out, "Average Feature Delta      : ", m.delta_mean);
  add_line(out, "Maximum Feature Delta      : ", m.delta_max);
  out << '\n';
}

void write_pair(std::ostream& out, const prod_measures& m, std::size_t k) {
  add_line(out, "----Pair ", k);
  add_line(out, "    Average Reprojection Error : ", m.pair_reprojection_mean[k]);
  add_line(out, "    Maximum Reprojection Error : ", m.pair_reprojection_max[k]);
  add_line(out, "    Matched Point Count        : ", m.pair_count[k]);
  add_line(out, "    Minimum Point Radius       : ", m.pair_radius_min[k] / mm_per_metre);
  add_line(out, "    Maximum Point Radius       : ", m.pair_radius_max[k] / mm_per_metre);
  out << '\n';
}

void write_camera(std::ostream& out, const prod_measures& m, std::size_t k) {
  add_line(out, "----Cam ", k);
  add_line(out, "    Average Feature Delta      : ", m.cam_delta_mean[k]);
  add_line(out, "    Maximum Feature Delta      : ", m.cam_delta_max[k]);
  out << '\n';
}

void write_report(std::ostream& out, const prod_measures& m, std::size_t camera_count) {
  add_line(out, "Camera Number : ", camera_count);
  add_line(out, "Calibration Sets Number : ", m.pair_reprojection_mean.size());
  out << '\n';
  write_total(out, m);
  out << " ---------Each QA Measures--------- \n";
  for (std::size_t k = 0; k < m.pair_count.size(); ++k) write_pair(out, m, k);
  for (std::size_t k = 0; k < m.cam_delta_mean.size(); ++k) write_camera(out, m, k);
}

}  // namespace

void measure_reprojection(prod_measures& measures, const rig& models,
                          const std::vector<pair_measurement>& measurements) {
  tally total;
  for (const pair_measurement& measurement : measurements) {
    tally pair;
    const Eigen::ArrayXd first = reprojection_errors(measurement, 0, models);
    const Eigen::ArrayXd second = reprojection_errors(measurement, 1, models);
    for (Eigen::Index k = 0; k < first.size(); ++k) {
      const double radius = measurement.poses[static_cast<std::size_t>(k)].translation.norm();
      for (tally* of : {&total, &pair}) {
        of->add_error(first[k]);
        of->add_error(second[k]);
        of->add_radius(radius);
      }
    }
    measures.pair_count.push_back(pair.count);
    measures.pair_radius_min.push_back(pair.radius_min);
    measures.pair_radius_max.push_back(pair.radius_max);
    measures.pair_reprojection_max.push_back(pair.error_max);
    measures.pair_reprojection_mean.push_back(pair.count > 0 ? pair.sum / pair.count : infinity);
  }
  measures.radius_min = total.radius_min;
  measures.radius_max = total.radius_max;
  measures.reprojection_max = total.error_max;
  measures.reprojection_mean = total.sum / total.count;
  measures.point_count = static_cast<std::uint32_t>(total.count);
}

void measure_deltas(prod_measures& measures, const std::vector<sphere_points>& before,
                    const std::vector<sphere_points>& after, double scale) {
  double sum = 0;
  double largest = 0;
  Eigen::Index corners = 0;
  for (std::size_t c = 0; c < before.size(); ++c) {
    double camera_sum = 0;
    double camera_largest = 0;
    const Eigen::Index count = before[c].cols();
    for (Eigen::Index k = 0; k < count; ++k) {
      const double delta = (after[c].col(k) - before[c].col(k)).norm();
      camera_sum += delta;
      camera_largest = std::max(camera_largest, delta);
    }
    measures.cam_delta_mean.push_back(count > 0 ? camera_sum / (static_cast<double>(count) * scale)
                                                : infinity);
    measures.cam_delta_max.push_back(camera_largest / scale);
    sum += camera_sum;
    largest = std::max(largest, camera_largest);
    corners += count;
  }
  measures.delta_mean = sum / (static_cast<double>(corners) * scale);
  measures.delta_max = largest / scale;
}

void write_production_report(const prod_measures& measures, std::size_t camera_count) {
  // However a report is lost, be it for want of a disk or of memory, it is lost without a
  // word: the refined calibration is good and stands in its file by now.
  try {
    std::ofstream out = open_output(report_name);
    if (!out) return;
    write_report(out, measures, camera_count);
    static_cast<void>(finish_output(out, report_name));
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace ocpan
