#include "tools/cal_advice.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/native_path.h"
#include "platform/text_file.h"
#include "tools/library_result.h"
#include "tools/messages.h"

namespace ocpan {
namespace {

// A pipe counts as one that can: opening it would wait for somebody to write.
bool can_be_opened(const std::string& path) {
  std::error_code failure;
  const auto type = std::filesystem::status(native_path(path), failure).type();
  if (type != std::filesystem::file_type::regular) {
    return type != std::filesystem::file_type::not_found &&
           type != std::filesystem::file_type::directory;
  }
  return open_input(path).is_open();
}

void explain_by_last_line(const cal_options& options) {
  std::error_code failure;
  complain("the library's last line above tells what to correct in ", options.configuration,
           "; its relative names start from the working folder ",
           std::filesystem::current_path(failure).string());
}

// The library says what is wrong with a configuration but in two cases, which it passes
// over in silence.
void explain_invalid(const cal_story& story, const cal_options& options) {
  if (story.last_lines.empty()) {
    complain("a board has at least 3 by 3 inner corners; correct board_shape in ",
             options.configuration);
  } else if (story.progress.named() > 0) {
    complain("a rig has 2 to 8 cameras; correct camera_info in ", options.configuration);
  } else {
    explain_by_last_line(options);
  }
}

void explain_result(const cal_story& story, const cal_options& options) {
  const int result = story.end.reply->result;
  complain("the calibration ended with ", result, ": ", meaning_of(result));
  if (!can_be_opened(options.configuration)) {
    complain("the configuration ", options.configuration,
             " can't be opened; check its name and that it may be read");
    return;
  }
  switch (result) {
    case OCPAN_INVALID:
      return explain_invalid(story, options);
    case OCPAN_OUTPUT:
      return complain("see that the disk isn't full and the folder of output_filename is there");
    case OCPAN_MEMORY:
      return complain("close other programs or give the machine more memory");
    default:
      return explain_by_last_line(options);
  }
}

void explain_broken_off(const child_end& process) {
  if (process.how == child_end::kind::not_started) {
    complain("the calibration couldn't be started (", process.words,
             "); free memory or end other processes, then run it again");
  } else if (process.interrupted) {
    complain("interrupted (", process.words, "); run it again to calibrate");
  } else if (process.how == child_end::kind::killed) {
    complain("the calibration was ended by ", process.words,
             "; if nobody did that, the machine may be out of memory, or a picture may have "
             "crashed its decoder: the last picture named above is the first to look at");
  } else {
    complain("the calibration ended with ", process.words, " without a result; run it again");
  }
}

// Says what a failed run leaves where a calibration is expected.
void tell_of_files(const cal_story& story, int exit_code) {
  const auto& files = story.outputs.files();
  const bool any = std::any_of(files.begin(), files.end(), [&](const std::string& file) {
    return story.outputs.written(file);
  });
  std::error_code failure;
  if (any) {
    complain("files were written, perhaps not to their end; don't use ", files.front(),
             "; exit code ", exit_code);
  } else if (!files.empty() && std::filesystem::exists(files.front(), failure)) {
    complain("no calibration file was written, ", files.front(),
             " is of an earlier run; exit code ", exit_code);
  } else {
    complain("no calibration file was written; exit code ", exit_code);
  }
}

void warn_of_no_board(const cal_progress& pictures) {
  const char* const start =
      "warning: no board was found in any picture, so the calibration holds nothing but its "
      "start values; ";
  if (pictures.boards_not_found() == 0 && pictures.unreadable() > 0) {
    complain(start,
             "the pictures can't be read: check width and height in camera_info, and the "
             "library's lines on them");
  } else {
    complain(start, "look at the pictures in ", debug_folder,
             " and check board_shape (inner corners)");
  }
}

}  // namespace

void explain_failure(const cal_story& story, const cal_options& options, int exit_code) {
  if (story.end.reply) {
    explain_result(story, options);
  } else {
    explain_broken_off(story.end.process);
  }
  tell_of_files(story, exit_code);
}

void warn_of_doubts(const cal_story& story, const std::string& folder_failure) {
  if (!folder_failure.empty()) {
    complain("warning: no debug pictures, since the folder ", debug_folder,
             " can't be made in the working folder (", folder_failure, ")");
  }
  const int meant = static_cast<int>(story.progress.debug_pictures().size());
  const int written = story.outputs.debug_pictures_written(story.progress.debug_pictures());
  if (folder_failure.empty() && story.end.reply && written < meant) {
    complain("warning: ", meant - written, " debug pictures couldn't be written to ", debug_folder,
             "; see that it may be written to and its disk isn't full");
  }
  if (story.end.reply && story.end.reply->result == OCPAN_SUCCESS &&
      story.end.reply->measures.matched_point_count == 0) {
    warn_of_no_board(story.progress);
  }
}

}  // namespace ocpan
