#include "simulator/presets.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <Eigen/Geometry>

#include "model/pose.h"
#include "model/rigid_rotation.h"
#include "simulator/random_numbers.h"

namespace ocpan {
namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;

struct preset_row {
  const char* name;
  std::size_t cameras;
  camera_details details;
  double step_degrees;  // between neighbours
  double radius;        // of the circle on which the cameras stand, unit of the square
  int frames;           // a set
  pose_limits poses;
};

// Those whose steps close the circle are rings, the others fans with camera 0 near the middle.
constexpr preset_row rows[] = {
    {"2-lens0", 2, {960, 720, 80, 0}, 35, 122, 10, {350, 800, 40, 30}},
    {"3-lens0", 3, {1280, 960, 80, 0}, 25, 165, 10, {300, 700, 50, 30}},
    {"4-lens0", 4, {960, 720, 80, 0}, 35, 122, 8, {350, 800, 40, 30}},
    {"8-lens0", 8, {960, 720, 100, 0}, 45, 100, 8, {300, 650, 40, 30}},
    {"2-lens1", 2, {960, 720, 120, 1}, 60, 70, 10, {300, 700, 40, 30}},
    {"3-lens1", 3, {1280, 960, 190, 1}, 120, 70, 8, {280, 650, 40, 30}},
    {"4-lens1", 4, {1280, 960, 190, 1}, 90, 70, 8, {280, 650, 40, 30}},
    {"8-lens1", 8, {960, 720, 110, 1}, 45, 100, 8, {320, 750, 40, 30}},
    {"2-lens2", 2, {1600, 1600, 220, 2}, 180, 20, 12, {320, 650, 40, 30}},
    {"3-lens2", 3, {1280, 1280, 220, 2}, 120, 40, 8, {280, 550, 40, 30}},
    {"4-lens2", 4, {1280, 1280, 220, 2}, 90, 60, 8, {280, 550, 40, 30}},
    {"8-lens2", 8, {1280, 1280, 220, 2}, 45, 80, 6, {280, 550, 40, 30}},
};

constexpr double scale_off = 1.008;     // of the start model's scale
constexpr double centre_x_off = 3;      // pixels
constexpr double centre_y_off = -2;     // pixels
constexpr double law_off = 1.01;        // of L
constexpr double axis_off = 0.0036;     // radians between O and A
constexpr double rho_0_off = 0.01;      // where the distortion axis is off
constexpr double mounting_degrees = 1;  // error of a camera's angles
constexpr double mounting_shift = 2;    // error of its place
enum class lens_kind { alike, off_axis, unlike };

double radians(double degrees) { return degrees * pi / 180; }

// How a true lens differs from the start model.
struct lens_error {
  double scale = scale_off;
  double centre_x = centre_x_off;
  double centre_y = centre_y_off;
  double law = law_off;
  double rho_0 = 0;
  double axis_x = 0;  // of O against A, radians
  double axis_y = 0;
};

lens_error error_of(lens_kind kind, random_numbers& numbers) {
  lens_error error;
  if (kind == lens_kind::off_axis) {
    error.rho_0 = rho_0_off;
    // Camera 0 starts with its axes at the pole of their angles, so which way O lies off A
    // decides how far the last stage of a calibration gets: this way it mostly gets there.
    error.axis_x = -axis_off;
  } else if (kind == lens_kind::unlike) {
    error.scale *= 1 + numbers.uniform(-0.005, 0.005);
    error.centre_x += numbers.uniform(-3, 3);
    error.centre_y += numbers.uniform(-3, 3);
    error.law *= 1 + numbers.uniform(-0.01, 0.01);
    error.rho_0 = numbers.uniform(-rho_0_off, rho_0_off);
    error.axis_x = numbers.uniform(-axis_off, axis_off);
    error.axis_y = numbers.uniform(-axis_off, axis_off);
  }
  return error;
}

// A camera at the origin, looking along -z.
model_map true_lens(const camera_details& details, const lens_error& error) {
  model_map model = initial_model(details);
  model[H_0] *= error.scale;
  model[V_1] *= error.scale;
  model[H_2] -= error.centre_x;
  model[V_2] -= error.centre_y;
  model[L] *= error.law;
  model[rho_0] = error.rho_0;
  if (error.axis_x != 0 || error.axis_y != 0) {
    const direction_angles axis = angles_from_direction(
        Vector3d(std::sin(error.axis_x), std::sin(error.axis_y), -std::cos(error.axis_x)));
    model[O_th] = axis.th;
    model[O_ph] = axis.ph;
  }
  return model;
}

bool is_ring(const preset_row& row) {
  return row.step_degrees * static_cast<double>(row.cameras) == 360;
}

// The steps to the left at which a camera stands: 0, 1, 2, ... round a ring, and 0, 1, -1,
// 2, ... in a fan.
int place_of(const preset_row& row, std::size_t camera) {
  const int index = static_cast<int>(camera);
  if (is_ring(row)) return index;
  return index % 2 == 1 ? (index + 1) / 2 : -index / 2;
}

model_map placed_camera(const preset_row& row, std::size_t camera, const model_map& lens,
                        random_numbers& numbers) {
  if (camera == 0) return lens;
  const Vector3d ahead(0, 0, -1);
  const double yaw = radians(row.step_degrees * place_of(row, camera));
  const Matrix3d turn = rotation_from_vector(Vector3d(0, yaw, 0));
  const auto any = [&](double most) {
    return Vector3d(numbers.uniform(-most, most), numbers.uniform(-most, most),
                    numbers.uniform(-most, most));
  };
  model_map model = rotate_model(lens, turn * rotation_from_vector(any(radians(mounting_degrees))));
  const Vector3d centre = row.radius * (turn * ahead - ahead) + any(mounting_shift);
  model[C_0] = centre.x();
  model[C_1] = centre.y();
  model[C_2] = centre.z();
  return model;
}

// A series of each camera alone, then one of each two neighbours.
std::vector<series_description> series_of(const preset_row& row) {
  std::vector<series_description> sets;
  for (std::size_t camera = 0; camera < row.cameras; ++camera) {
    sets.push_back({"cam" + std::to_string(camera + 1), {camera}, row.frames});
  }
  std::vector<std::size_t> in_order(row.cameras);
  std::iota(in_order.begin(), in_order.end(), std::size_t{0});
  std::sort(in_order.begin(), in_order.end(),
            [&](auto a, auto b) { return place_of(row, a) < place_of(row, b); });
  if (is_ring(row) && row.cameras > 2) in_order.push_back(in_order.front());
  for (std::size_t i = 1; i < in_order.size(); ++i) {
    const auto [first, second] = std::minmax(in_order[i - 1], in_order[i]);
    sets.push_back({"pair" + std::to_string(first + 1) + std::to_string(second + 1),
                    {first, second},
                    row.frames});
  }
  return sets;
}

// The series of a preset. Where a calibration's last stage ends depends on the boards'
// poses: it may end without a step, and then the distortion stays unknown. For the rigs
// that accuracies are told of the poses are such that it goes on, whatever the noise.
std::uint64_t seed_of(const preset_row& row, lens_kind kind) {
  if (kind == lens_kind::off_axis) return 107;
  if (kind == lens_kind::alike && row.details.lens == 0 && row.cameras == 3) return 34;
  return row.cameras * 10 + static_cast<std::uint64_t>(row.details.lens);
}

rig_description described(const preset_row& row, lens_kind kind) {
  rig_description description;
  description.seed = seed_of(row, kind);
  const std::uint64_t rig_seed = row.cameras * 10 + static_cast<std::uint64_t>(row.details.lens);
  random_numbers lens_numbers(rig_seed, 1000), place_numbers(rig_seed, 1001);
  for (std::size_t camera = 0; camera < row.cameras; ++camera) {
    const model_map lens = true_lens(row.details, error_of(kind, lens_numbers));
    description.cameras.push_back({row.details, placed_camera(row, camera, lens, place_numbers)});
  }
  description.sets = series_of(row);
  description.poses = row.poses;
  return description;
}

// A name's row and kind of lens; null if there is no such preset.
const preset_row* find_row(const std::string& name, lens_kind& kind) {
  for (const preset_row& row : rows) {
    const std::string plain = row.name;
    for (const auto& [suffix, of_suffix] : {std::pair{"", lens_kind::alike},
                                            {"-unlike", lens_kind::unlike},
                                            {"-off-axis", lens_kind::off_axis}}) {
      if (name != plain + suffix) continue;
      if (of_suffix == lens_kind::off_axis && plain != "4-lens1") continue;
      kind = of_suffix;
      return &row;
    }
  }
  return nullptr;
}

}  // namespace

std::vector<std::string> preset_names() {
  std::vector<std::string> names;
  for (const preset_row& row : rows) {
    const std::string plain = row.name;
    names.push_back(plain);
    if (plain == "4-lens1") names.push_back(plain + "-off-axis");
    names.push_back(plain + "-unlike");
  }
  return names;
}

std::string make_preset(rig_description& description, const std::string& name) {
  lens_kind kind = lens_kind::alike;
  if (const preset_row* row = find_row(name, kind)) {
    description = described(*row, kind);
    return {};
  }
  std::string error = "no preset \"" + name + "\"; there are";
  for (const std::string& known : preset_names()) error += " " + known;
  return error;
}

}  // namespace ocpan
