#include "simulator/rig_calibration.h"

#include "calfiles/selen360_cal_file.h"
#include "platform/text_file.h"
#include "simulator/rig_json.h"
#include "src/result_codes.h"

namespace ocpan {
namespace {

bool is_calibration(const std::string& path) {
  std::ifstream in = open_input(path);
  char first = 0;
  in >> first;
  return in.is_open() && first != '{';
}

std::string read_calibration(rig_description& description, const std::string& path) {
  selen360_cal_file file(1);  // no radius plays a part
  if (file.load(path.c_str()) != code::success) return path + " is no calibration";
  if (file.details().size() != file.models().size()) {
    return path + " tells the pictures of " + std::to_string(file.details().size()) +
           " cameras and the models of " + std::to_string(file.models().size());
  }
  description = {};
  for (std::size_t i = 0; i < file.models().size(); ++i) {
    description.cameras.push_back({file.details()[i], file.models()[i]});
  }
  const std::string problem = rig_problem(description);
  return problem.empty() ? problem : path + ": " + problem;
}

}  // namespace

std::string read_rig_or_calibration(rig_description& description, const std::string& path) {
  return is_calibration(path) ? read_calibration(description, path)
                              : read_rig_file(description, path);
}

}  // namespace ocpan
