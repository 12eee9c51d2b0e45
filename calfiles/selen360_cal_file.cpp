#include "calfiles/selen360_cal_file.h"

#include <locale>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "calfiles/truncated.h"
#include "model/projection.h"
#include "model/resize.h"
#include "platform/text_file.h"
#include "src/console.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

constexpr double model_units_per_radius = 1000.0;
constexpr std::string_view blanks = " \t\v\f\r\n";

std::optional<parameter_name> parameter_of(std::string_view text) {
  for (int key = 0; key < parameter_count; ++key) {
    const auto name = static_cast<parameter_name>(key);
    if (text == parameter_text(name)) return name;
  }
  return std::nullopt;
}

// Reads a calibration file line by line into models and details.
class line_reader {
 public:
  line_reader(std::vector<model_map>& models, std::vector<camera_details>& details)
      : models_(models), details_(details) {
    number_.imbue(std::locale::classic());
    number_.exceptions(std::ios::badbit);  // or a failed allocation would read as 0
  }

  // False at a bad lens, where the reading ends at once.
  bool read_line(std::string_view line);
  int result() const { return result_; }

 private:
  enum class outcome { taken, unknown_key, bad_lens };
  outcome read_token(std::string_view token, model_map& model, bool& is_model_line);
  outcome read_lens(std::string_view text);

  // A text that is no number gives 0, an empty one leaves the field as it was.
  template <typename Number>
  void read_number(std::string_view text, Number& field) {
    number_.clear();
    number_.str(std::string(text));
    number_ >> field;
  }

  std::vector<model_map>& models_;
  std::vector<camera_details>& details_;
  camera_details running_;  // carried from line to line
  int result_ = code::success;
  std::istringstream number_;
};

bool line_reader::read_line(std::string_view line) {
  model_map model;
  bool is_model_line = false;
  std::size_t begin = line.find_first_not_of(blanks);
  while (begin != std::string_view::npos) {
    const std::size_t end = std::min(line.find_first_of(blanks, begin), line.size());
    const outcome got = read_token(line.substr(begin, end - begin), model, is_model_line);
    if (got != outcome::taken) result_ = code::content_malformed;
    if (got == outcome::bad_lens) return false;
    if (got == outcome::unknown_key) break;  // the rest of the line is dropped, the line counts
    begin = line.find_first_not_of(blanks, end);
  }
  if (is_model_line) {
    models_.push_back(std::move(model));
  } else {
    details_.push_back(running_);
  }
  return true;
}

line_reader::outcome line_reader::read_token(std::string_view token, model_map& model,
                                             bool& is_model_line) {
  const std::size_t colon = token.find(':');
  const std::string_view key = token.substr(0, colon);
  // Without a colon the token is its own value.
  const std::string_view text = colon == std::string_view::npos ? token : token.substr(colon + 1);
  if (const auto parameter = parameter_of(key)) {
    is_model_line = true;
    read_number(text, model[*parameter]);
  } else if (key == "Width") {
    read_number(text, running_.width);
  } else if (key == "Height") {
    read_number(text, running_.height);
  } else if (key == "Hfov") {
    read_number(text, running_.hfov);
  } else if (key == "Lens") {
    return read_lens(text);
  } else {
    print_line("parameter not recognised: ", key);
    return outcome::unknown_key;
  }
  return outcome::taken;
}

line_reader::outcome line_reader::read_lens(std::string_view text) {
  read_number(text, running_.lens);
  if (running_.lens >= 0 && running_.lens <= 2) return outcome::taken;
  print_line("Lens expects 0, 1 or 2, got: '", running_.lens, "', in value: ", text);
  return outcome::bad_lens;
}

void write_details(std::ostream& out, const camera_details& details) {
  out << "Width:" << details.width << " Height:" << details.height << " Lens:" << details.lens
      << " Hfov:" << details.hfov << '\n';
}

void write_model(std::ostream& out, const model_map& model) {
  const char* separator = "";
  for (const auto& [key, value] : model) {
    if (key < 0 || key >= parameter_count) continue;  // has no name
    out << separator << parameter_text(key) << ':' << value;
    separator = " ";
  }
  out << '\n';
}

}  // namespace

selen360_cal_file::selen360_cal_file(float sphere_radius) : sphere_radius_(sphere_radius) {}

selen360_cal_file::selen360_cal_file(std::vector<model_map> models,
                                     std::vector<camera_details> details)
    : models_(std::move(models)), details_(std::move(details)) {}

int selen360_cal_file::save(const std::string& file_name) const {
  std::ofstream out = open_output(file_name);
  if (!out) {
    print_line("Couldn't open: ", file_name);
    return code::output_unopened;
  }
  for (const camera_details& details : details_) write_details(out, details);
  for (const model_map& model : models_) write_model(out, model);
  if (finish_output(out, file_name)) return code::success;
  print_line("Error writing output file: ", file_name);
  return code::output_unopened;
}

int selen360_cal_file::load(const char* file_name) {
  models_.clear();
  details_.clear();
  std::ifstream in = open_input(file_name);
  if (!in) {
    print_line("Couldn't open: ", file_name);
    return code::input_unusable;
  }
  line_reader reader(models_, details_);
  std::string line;
  while (read_text_line(in, line)) {
    if (!reader.read_line(line)) break;
  }
  if (in.bad()) {
    print_line("Couldn't read: ", file_name);
    return code::input_unusable;
  }
  return reader.result();
}

bool selen360_cal_file::knows(std::uint64_t camera, const char* complaint) const {
  if (camera < cam_count() && camera < details_.size()) return true;
  print_line(complaint, camera);
  return false;
}

int selen360_cal_file::cam_width(std::uint64_t camera) const {
  if (!knows(camera, "selen360_cal_file::cam_width() invalid camera id: ")) return -1;
  return details_[camera].width;
}

int selen360_cal_file::cam_height(std::uint64_t camera) const {
  if (!knows(camera, "selen360_cal_file::cam_height() invalid camera id: ")) return -1;
  return details_[camera].height;
}

int selen360_cal_file::cam_lens(std::uint64_t camera) const {
  if (!knows(camera, "selen360_cal_file::cam_lens() invalid camera id: ")) return -1;
  return details_[camera].lens;
}

int selen360_cal_file::cam_hfov(std::uint64_t camera) const {
  if (!knows(camera, "selen360_cal_file::cam_hfov() invalid camera id: ")) return -1;
  return truncated(details_[camera].hfov);
}

int selen360_cal_file::cam_project(const std::vector<point_block>& directions, std::uint64_t camera,
                                   std::vector<point_block>& pixels) const {
  if (directions.empty()) return code::success;  // there may be no such camera
  const camera_frame frame(models_[camera]);
  const double radius = sphere_radius_;
  const Eigen::Vector3d none = Eigen::Vector3d::Zero();
  Eigen::Matrix3Xd points;
  Eigen::ArrayXd x;
  Eigen::ArrayXd y;
  pixels.reserve(pixels.size() + directions.size());
  for (const point_block& face : directions) {
    point_block& positions = pixels.emplace_back();
    for (std::size_t row = 0; row < face.size(); ++row) {
      points = (face[row].transpose() * radius) * model_units_per_radius;
      project_points(x, y, points, frame, none, none);
      positions[row].resize(points.cols(), 2);
      positions[row].col(0) = x;
      positions[row].col(1) = y;
    }
  }
  return code::success;
}

int selen360_cal_file::cam_unproject(Eigen::MatrixX3d& points, const Eigen::MatrixX2d& pixels,
                                     std::uint64_t camera) const {
  const model_map& model = models_[camera];
  if (!model.contains(C_0) || !model.contains(C_1) || !model.contains(C_2)) {
    throw std::out_of_range("invalid map<K, T> key");
  }
  Eigen::Matrix3Xd rays;
  unproject_points(rays, pixels.transpose(), model);
  const double radius = sphere_radius_;
  // The centre is subtracted, although a point seen along the ray would want it added: the
  // tables in use are made so.
  resize(points, pixels.rows(), 3);
  points = ((radius * rays.transpose()) * model_units_per_radius).rowwise() -
           vector_of(model, C_0).transpose();
  return code::success;
}

}  // namespace ocpan
