#pragma once

#include <cstdint>

#include <opencv2/core.hpp>

#include "model/pose.h"
#include "simulator/rig_description.h"

namespace ocpan {

// Where a camera sees anything: 1 inside and 0 outside the circle of a round picture
// (lens 2), CV_32FC1 of the picture's size; empty where the whole picture sees. Made once
// per camera, for it back-projects every pixel.
cv::Mat field_of_view(const rig_camera& camera);

// The picture that a camera takes of a board with a white margin before a grey ground of
// mild texture, CV_8UC1. Every pixel's samples are carried back through the true model to
// the board's plane, so a corner stands where project_points puts it.
//
//   field   as field_of_view(camera) gives it
//   pose    board -> rig; null for a picture without a board
//   seed    of ground, light and noise
cv::Mat render_board(const rig_camera& camera, const cv::Mat& field, const board_description& board,
                     const ModelPose* pose, const rendering_options& options, std::uint64_t seed);

}  // namespace ocpan
