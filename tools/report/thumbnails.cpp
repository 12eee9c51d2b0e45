#include "tools/report/thumbnails.h"

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <optional>
#include <system_error>

#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "calibration/chessboard_detection.h"
#include "calibration/read_image.h"
#include "platform/native_path.h"

namespace ocpan {
namespace {

constexpr int small_width = 260;               // pixels
constexpr std::size_t most_bytes = 1'500'000;  // of all together
constexpr std::size_t most_pictures = 96;

// The picture in colours at twice the width of the small one, empty if it can't be read.
cv::Mat read_doubled(const std::string& file) {
  cv::Mat grey, scaled, colour;
  if (!decode_grey(grey, file.c_str()) || grey.empty()) return colour;
  const double scale = 2.0 * small_width / grey.cols;
  cv::resize(grey, scaled, {}, scale, scale, scale < 1 ? cv::INTER_AREA : cv::INTER_LINEAR);
  cv::cvtColor(scaled, colour, cv::COLOR_GRAY2BGR);
  return colour;
}

cv::Mat halved(const cv::Mat& picture) {
  cv::Mat small;
  cv::resize(picture, small, {}, 0.5, 0.5, cv::INTER_AREA);
  return small;
}

void draw_corners(cv::Mat& doubled, const Eigen::Matrix2Xd& corners, int full_width,
                  const cal_frame_set& set) {
  const double scale = static_cast<double>(doubled.cols) / full_width;
  std::vector<cv::Point2f> places;
  for (Eigen::Index i = 0; i < corners.cols(); ++i) {
    const Eigen::Vector2d place = ((corners.col(i).array() + 0.5) * scale - 0.5).matrix();
    places.emplace_back(static_cast<float>(place.x()), static_cast<float>(place.y()));
  }
  if (!places.empty()) {
    cv::drawChessboardCorners(doubled, {set.board_width, set.board_height}, places, true);
  }
}

bool is_older(const std::filesystem::path& a, const std::filesystem::path& b) {
  std::error_code failure_a, failure_b;
  const auto time_a = std::filesystem::last_write_time(a, failure_a);
  const auto time_b = std::filesystem::last_write_time(b, failure_b);
  return failure_a || failure_b || time_a < time_b;
}

// The debug picture of a run, if it shows this picture: sets of another rig may have the
// same names.
std::optional<cv::Mat> debug_picture(const rig_picture& picture, const cal_frame_set& set,
                                     const cv::Mat& doubled) {
  const std::string file = frame_picture_name(set.name, picture.set_camera, picture.frame);
  if (is_older(native_path(file), native_path(picture.file))) return std::nullopt;
  cv::Mat found;
  try {
    found = cv::imread(native_path(file), cv::IMREAD_COLOR);
  } catch (const cv::Exception&) {  // a header that claims too much
  }
  if (found.cols != picture.finding.width || found.rows != picture.finding.height) {
    return std::nullopt;
  }
  cv::Mat same_size, difference;
  cv::resize(found, same_size, doubled.size(), 0, 0, cv::INTER_AREA);
  cv::absdiff(same_size, doubled, difference);
  constexpr double most_difference = 16;  // grey levels; the drawn corners are part of it
  const cv::Scalar mean = cv::mean(difference);
  if ((mean[0] + mean[1] + mean[2]) / 3 > most_difference) return std::nullopt;
  return halved(same_size);
}

std::optional<thumbnail> make_thumbnail(const rig_picture& picture, const cal_frame_set& set) {
  cv::Mat doubled = read_doubled(picture.file);
  if (doubled.empty()) return std::nullopt;
  std::optional<cv::Mat> small = debug_picture(picture, set, doubled);
  if (!small) {
    draw_corners(doubled, picture.finding.corners, picture.finding.width, set);
    small = halved(doubled);
  }
  std::vector<unsigned char> bytes;
  if (!cv::imencode(".jpg", *small, bytes, {cv::IMWRITE_JPEG_QUALITY, 74})) return std::nullopt;
  return thumbnail{0, {bytes.begin(), bytes.end()}, small->cols, small->rows};
}

// How much a picture has to tell, the most telling the highest.
double weight_of(const rig_picture& picture, const evaluation& quality) {
  if (picture.finding.state != picture_state::found) return 3e9;
  if (!picture.board) return 0;
  const evaluated_board& board = quality.boards[picture.board->board];
  if (board.fate != board_fate::used) return 2e9;
  return std::min(board.views[picture.board->view].rms_pixels, 1e9);
}

// The pictures by their rank within their camera, so that all cameras have their share.
std::vector<std::size_t> most_telling_first(const std::vector<rig_picture>& pictures,
                                            const evaluation& quality) {
  std::vector<std::size_t> order(pictures.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return weight_of(pictures[a], quality) > weight_of(pictures[b], quality);
  });
  std::vector<std::size_t> rank(pictures.size());
  std::map<std::size_t, std::size_t> of_camera;
  for (const std::size_t i : order) rank[i] = of_camera[pictures[i].camera]++;
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return rank[a] < rank[b]; });
  return order;
}

}  // namespace

std::vector<thumbnail> make_thumbnails(const rig_pictures& pictures,
                                       const std::vector<rig_picture>& every_picture,
                                       const evaluation& quality) {
  std::vector<thumbnail> thumbnails;
  std::size_t bytes = 0;
  for (const std::size_t i : most_telling_first(every_picture, quality)) {
    std::optional<thumbnail> small =
        make_thumbnail(every_picture[i], pictures.sets[every_picture[i].set]);
    if (!small) continue;
    bytes += small->jpeg.size();
    if (bytes > most_bytes || thumbnails.size() == most_pictures) break;
    small->picture = i;
    thumbnails.push_back(std::move(*small));
  }
  std::sort(thumbnails.begin(), thumbnails.end(),
            [](const thumbnail& a, const thumbnail& b) { return a.picture < b.picture; });
  return thumbnails;
}

}  // namespace ocpan
