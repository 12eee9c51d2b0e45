#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "production/feature_records.h"
#include "production/quad_matching.h"

namespace ocpan {

// The JPEG pictures under ".\tmp\" that the line staff reads. They are left out without a
// word where they can't be written. Pictures are grey, 8 bits; cameras count from 0.

// "0.ori_point_" and the camera: a red cross on every corner.
void write_corner_picture(const cv::Mat& picture, const std::vector<prod_corner>& corners,
                          std::size_t camera);

// "1.black_quads_" and "1.white_quads_" and the camera: the edges of every quad, and its
// number in its list at its centre.
void write_quad_pictures(const cv::Mat& picture, const std::vector<prod_corner>& corners,
                         const quad_lists& quads, std::size_t camera);

// A prefix, the pair's cameras, "_" and the camera, for both cameras of the pair: crosses on
// the matched corners, numbered by their place in the list. Number and colour are scattered
// at random, so that numbers of near corners can be told apart.
//
//   prefix              "2.naive_matches_" or "3.matches_"
//   pictures, corners   per camera of the rig
void write_match_pictures(const std::string& prefix, const camera_pair& pair,
                          const corner_index_lists& matches, const std::vector<cv::Mat>& pictures,
                          const std::vector<std::vector<prod_corner>>& corners);

}  // namespace ocpan
