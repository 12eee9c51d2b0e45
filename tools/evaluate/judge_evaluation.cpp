#include "tools/evaluate/judge_evaluation.h"

#include <algorithm>
#include <map>
#include <utility>

#include "tools/evaluate/pair_loops.h"

namespace ocpan {
namespace {

constexpr const char* refine_advice =
    "refine the calibration with oc_pan refine, or calibrate anew from more boards";

// A camera whose views fit alone is only as far off as its pairs tell.
void judge_lens(evaluation& result, std::size_t index, const std::string& name) {
  evaluated_camera& camera = result.cameras[index];
  const double rms = camera.residuals.pixels.rms;
  camera.judged = rms_limits.of(rms);
  const verdict lens = rms_limits.of(camera.alone_rms_pixels);
  const bool told =
      std::any_of(result.pairs.begin(), result.pairs.end(), [&](const evaluated_pair& pair) {
        return (pair.first == index || pair.second == index) && pair.judged >= camera.judged;
      });
  if (camera.judged == verdict::good || (lens == verdict::good && told)) return;
  add_finding(
      result.findings, camera.judged,
      text_of(name, ": its corners are ", rms, " pixels off (RMS), ", camera.alone_rms_pixels,
              " with each picture by itself; if its pictures are sharp and the board is"
              " flat, ",
              refine_advice, "."));
}

void judge_camera(evaluation& result, std::size_t index) {
  evaluated_camera& camera = result.cameras[index];
  const std::string name = "Camera " + std::to_string(index + 1);
  const auto find = [&](verdict judged, const std::string& text) {
    camera.judged = worse_of(camera.judged, judged);
    add_finding(result.findings, judged, name + text);
  };
  if (camera.boards == 0) {
    find(verdict::doubtful,
         " has no board here, so nothing is known of it; give pictures of a board in it.");
    return;
  }
  judge_lens(result, index, name);
  if (camera.boards < fewest_camera_boards) {
    find(verdict::doubtful,
         text_of(" has only ", camera.boards, camera.boards == 1 ? " board" : " boards",
                 " here, too few to judge its lens; give at least ", fewest_camera_boards,
                 ", spread over the picture."));
  }
}

std::string pair_words(const evaluated_pair& pair) {
  return "Cameras " + std::to_string(pair.first + 1) + " and " + std::to_string(pair.second + 1);
}

// Whether a pair's own boards don't agree with one another, wherever its cameras stand.
bool own_boards_disagree(const evaluated_pair& pair) {
  return pair.own && rms_limits.of(pair.own->rms_pixels) == verdict::unusable;
}

void judge_pair(evaluation& result, evaluated_pair& pair) {
  const double rms = pair.residuals.pixels.rms;
  if (const verdict judged = rms_limits.of(rms); judged != verdict::good) {
    pair.judged = judged;
    const std::string what = pair_words(pair) + text_of(": the corners of their shared boards are ",
                                                        rms, " pixels off (RMS)");
    if (own_boards_disagree(pair)) {
      add_finding(result.findings, judged,
                  what +
                      ", wherever the cameras are placed; the pictures of a frame don't belong"
                      " together (a shuffled or shifted series) or a lens is wrong.");
    } else {
      add_finding(result.findings, judged, what + "; " + refine_advice + ".");
    }
  }
  if (!pair.own || own_boards_disagree(pair)) return;
  const double turn = pair.own->turn_degrees;
  if (turn <= significant_deviations * pair.own->turn_deviation_degrees) return;
  const verdict judged = pair_turn_limits.of(turn);
  if (judged == verdict::good) return;
  pair.judged = worse_of(pair.judged, judged);
  add_finding(result.findings, judged,
              pair_words(pair) + text_of(": by their own boards they stand ", turn,
                                         " degrees from where the calibration has them; if a"
                                         " camera may have moved since, calibrate anew, otherwise ",
                                         refine_advice, "."));
}

void judge_loop(evaluation& result, pair_loop& loop) {
  if (loop.turn_degrees <= significant_deviations * loop.turn_deviation_degrees) return;
  loop.judged = loop_turn_limits.of(loop.turn_degrees);
  if (loop.judged == verdict::good) return;
  add_finding(result.findings, loop.judged,
              text_of("Going round ", camera_words(loop.cameras), " from pair to pair ends ",
                      loop.turn_degrees,
                      " degrees off; a camera moved between the series of two pairs, or a lens is"
                      " wrong: shoot the pairs again, or refine the lenses with oc_pan refine."));
}

void judge_boards(evaluation& result) {
  const auto left_out =
      std::count_if(result.boards.begin(), result.boards.end(),
                    [](const evaluated_board& board) { return board.fate != board_fate::used; });
  if (result.boards.empty()) {
    add_finding(result.findings, verdict::unusable,
                "No board is found in any picture; see what oc_pan check says of them.");
    return;
  }
  const double part = static_cast<double>(left_out) / static_cast<double>(result.boards.size());
  // One board says little, however few there are.
  const verdict judged = left_out < 2 ? verdict::good : left_out_limits.of(part);
  if (judged == verdict::good) return;
  add_finding(result.findings, judged,
              text_of(left_out, " of ", result.boards.size(),
                      " boards are left out; mend or remove their pictures, or, if they are"
                      " right, calibrate anew."));
}

// Whether the views of a board contradict one another, each good by itself.
bool is_contradiction(const evaluated_board& board) {
  return board.views.size() > 1 &&
         (board.fate == board_fate::flipped || board.fate == board_fate::torn_frame ||
          board.fate == board_fate::behind_camera);
}

void judge_contradictions(evaluation& result) {
  const auto count = std::count_if(result.boards.begin(), result.boards.end(), is_contradiction);
  if (count == 0) return;
  add_finding(result.findings, verdict::doubtful,
              text_of(count, count == 1 ? " board is" : " boards are",
                      " left out because cameras contradict one another there; see that the"
                      " pictures of each frame belong together and that no camera was moved."));
}

// The boards that both cameras of a pair saw.
struct shared_boards {
  std::size_t all = 0;
  std::size_t left_out = 0;  // for what concerns one of the two
};

using camera_numbers = std::pair<std::size_t, std::size_t>;

std::map<camera_numbers, shared_boards> boards_by_pair(const evaluation& result) {
  std::map<camera_numbers, shared_boards> pairs;
  for (const evaluated_board& board : result.boards) {
    const auto is_suspect = [&](std::size_t camera) {
      return board.suspects.empty() || std::find(board.suspects.begin(), board.suspects.end(),
                                                 camera) != board.suspects.end();
    };
    for (std::size_t p = 0; p < board.views.size(); ++p) {
      for (std::size_t q = p + 1; q < board.views.size(); ++q) {
        const std::size_t first = board.views[p].camera, second = board.views[q].camera;
        shared_boards& shared = pairs[{first, second}];
        ++shared.all;
        shared.left_out +=
            board.fate != board_fate::used && (is_suspect(first) || is_suspect(second));
      }
    }
  }
  return pairs;
}

// A pair stands on its own boards only, however many others there are.
void judge_boards_of_pairs(evaluation& result) {
  for (const auto& [cameras, shared] : boards_by_pair(result)) {
    if (shared.left_out < 2) continue;
    const double part = static_cast<double>(shared.left_out) / static_cast<double>(shared.all);
    const verdict judged = left_out_limits.of(part);
    if (judged == verdict::good) continue;
    for (evaluated_pair& pair : result.pairs) {
      if (pair.first == cameras.first && pair.second == cameras.second) {
        pair.judged = worse_of(pair.judged, judged);
      }
    }
    add_finding(result.findings, judged,
                text_of("Cameras ", cameras.first + 1, " and ", cameras.second + 1, ": ",
                        shared.left_out, " of the ", shared.all,
                        " boards that both saw are left out; mend or remove their pictures."));
  }
}

void judge_links(evaluation& result) {
  const std::vector<std::size_t> parts = linked_parts(result.cameras.size(), result.pairs);
  std::vector<std::size_t> first_part, others;
  for (std::size_t c = 0; c < parts.size(); ++c) {
    (parts[c] == 0 ? first_part : others).push_back(c);
  }
  if (others.empty() || result.boards.empty()) return;
  add_finding(
      result.findings, verdict::doubtful,
      text_of("No usable board links ", camera_words(first_part), " with ", camera_words(others),
              ", so how they stand to one another can't be judged; shoot boards that"
              " cameras of both see."));
}

std::string list_of(const std::vector<std::size_t>& cameras) {
  std::string text;
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    if (i > 0) text += i + 1 == cameras.size() ? " and " : ", ";
    text += std::to_string(cameras[i] + 1);
  }
  return text;
}

}  // namespace

std::string camera_words(const std::vector<std::size_t>& cameras) {
  return (cameras.size() == 1 ? "camera " : "cameras ") + list_of(cameras);
}

void add_finding(std::vector<evaluation_finding>& findings, verdict judged,
                 const std::string& text) {
  const auto place =
      std::find_if(findings.begin(), findings.end(),
                   [&](const evaluation_finding& finding) { return finding.judged < judged; });
  findings.insert(place, {judged, text});
}

void judge_evaluation(evaluation& result) {
  result.findings.clear();
  judge_boards(result);
  for (evaluated_pair& pair : result.pairs) judge_pair(result, pair);
  for (pair_loop& loop : result.loops) judge_loop(result, loop);
  for (std::size_t c = 0; c < result.cameras.size(); ++c) judge_camera(result, c);
  judge_contradictions(result);
  judge_boards_of_pairs(result);
  judge_links(result);
  result.judged = verdict::good;
  for (const evaluation_finding& finding : result.findings) {
    result.judged = worse_of(result.judged, finding.judged);
  }
}

std::string why_left_out(const evaluated_board& board) {
  const std::string who = board.suspects.empty() ? "" : camera_words(board.suspects);
  switch (board.fate) {
    case board_fate::used:
      return {};
    case board_fate::no_pose:
      return "no finite pose fits" + (who.empty() ? who : " what " + who + " saw");
    case board_fate::behind_camera:
      return "it would stand behind " + who;
    case board_fate::flipped:
      return "the corners of " + who +
             (board.suspects.size() > 1 ? " don't come in one order" : " come in another order");
    case board_fate::torn_frame:
      return text_of("its pictures don't belong together, ", board.rms_pixels, " pixels off") +
             (who.empty() ? who : "; " + who + " stands apart");
    case board_fate::bad_corners:
      return "the corners found by " + who + " fit no flat board";
  }
  return {};
}

}  // namespace ocpan
