#pragma once

#include <vector>

#include <opencv2/core.hpp>

namespace ocpan {

// Responses at or below this count as none, grey values.
inline constexpr float response_floor = 32.0F;

// Reusable images of the detector, made once per run; they take the size of the picture
// that goes through them.
struct corner_scratch {
  cv::Mat smoothed;         // the 8-bit picture, blurred
  cv::Mat1f picture;        // the same in single precision
  cv::Mat1f padded;         // the picture, its rim replicated outwards
  int padding = 0;          // by so many pixels
  cv::Mat1f local_mean;     // mean of each pixel and its four direct neighbours
  cv::Mat1f neighbourhood;  // mean of the square of 2 radius + 1 pixels
  cv::Mat1f maximum;        // largest response over the radii
  std::vector<float> rows;  // three rows of a response, with a zero at both ends of each
  cv::Mat1d plus = (cv::Mat1d(3, 3) << 0.0, 0.2, 0.0, 0.2, 0.2, 0.2, 0.0, 0.2, 0.0);
};

// How much each pixel looks like the crossing of two edges, from 16 samples on a ring
// around it: opposite samples alike, those a quarter turn apart different, the ring's
// surroundings as bright as the middle. The ring has the form of the ChESS detector
// (S. Bennett and J. Lasenby, "ChESS - Quick and robust detection of chess-board
// features", 2014) with three sum terms of four and seven difference terms of eight: the
// floors of the detector are tuned to that.
//
// Gives an image of the picture's size: 0 where the response isn't above the floor or
// stands alone among its eight neighbours.
//
//   picture   smoothed grey values
//   radius    of the ring, pixels
//   scratch   not to be shared by two threads at once
cv::Mat1d corner_response(const cv::Mat1f& picture, int radius, corner_scratch& scratch);

// The parts of it, for several radii over one picture: sets what is the same for all radii
// up to most_radius; then raises the pixels of maximum to the response of a radius.
//
//   maximum   of the picture's size, 0 or above; single precision holds a response exactly
void prepare_response(const cv::Mat1f& picture, int most_radius, corner_scratch& scratch);
void raise_to_response(cv::Mat1f& maximum, const cv::Mat1f& picture, int radius,
                       corner_scratch& scratch);

}  // namespace ocpan
