#include "simulator/rig_json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

#include <nlohmann/json.hpp>

#include "platform/text_file.h"

namespace ocpan {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr std::array<std::pair<picture_fault, const char*>, 3> fault_names = {{
    {picture_fault::missing_board, "missing_board"},
    {picture_fault::truncated_file, "truncated_file"},
    {picture_fault::missing_file, "missing_file"},
}};

bool take(const json& value, double& out, const char*& expected) {
  expected = "a number";
  if (!value.is_number()) return false;
  out = value.get<double>();
  return true;
}

bool take(const json& value, float& out, const char*& expected) {
  double wide = 0;
  if (!take(value, wide, expected)) return false;
  if (std::abs(wide) > std::numeric_limits<float>::max()) return false;
  out = static_cast<float>(wide);
  return true;
}

bool take(const json& value, std::uint64_t& out, const char*& expected) {
  expected = "a whole number, 0 or above";
  if (!value.is_number_unsigned()) return false;
  out = value.get<std::uint64_t>();
  return true;
}

bool take(const json& value, int& out, const char*& expected) {
  expected = "a whole number";
  if (!value.is_number_integer()) return false;
  const double wide = value.get<double>();
  if (std::abs(wide) > std::numeric_limits<int>::max()) return false;
  out = value.get<int>();
  return true;
}

bool take(const json& value, std::string& out, const char*& expected) {
  expected = "a text";
  if (!value.is_string()) return false;
  out = value.get<std::string>();
  return true;
}

enum class presence { required, optional };

// One object of the text. The first thing that is wrong goes into the error, later ones
// are passed over; keys that nobody asked for are wrong as well.
class object_reader {
 public:
  object_reader(const json& value, std::string path, std::string& error)
      : value_(value), path_(std::move(path)), error_(error) {
    if (!value_.is_object()) fail(path_.empty() ? "the text" : path_, "an object");
  }

  template <typename Value>
  void read(const std::string& key, Value& out, presence needed = presence::optional) {
    const json* found = find(key, needed);
    const char* expected = nullptr;
    if (found && !take(*found, out, expected)) fail(name(key), expected);
  }

  // The value of a key, null if it isn't there.
  const json* find(const std::string& key, presence needed = presence::optional) {
    known_.push_back(key);
    if (!value_.is_object()) return nullptr;
    const auto found = value_.find(key);
    if (found != value_.end()) return &*found;
    if (needed == presence::required && error_.empty()) error_ = name(key) + ": is missing";
    return nullptr;
  }

  // Calls read_element(value, path) for the elements of a list.
  template <typename Read>
  void read_list(const std::string& key, Read&& read_element,
                 presence needed = presence::optional) {
    const json* list = find(key, needed);
    if (!list) return;
    if (!list->is_array()) return fail(name(key), "a list");
    for (std::size_t i = 0; i < list->size(); ++i) {
      read_element((*list)[i], name(key) + "[" + std::to_string(i) + "]");
    }
  }

  // To be called when all keys were asked for.
  void refuse_unknown_keys() {
    if (!value_.is_object() || !error_.empty()) return;
    for (const auto& [key, unused] : value_.items()) {
      if (std::find(known_.begin(), known_.end(), key) == known_.end()) {
        error_ = name(key) + ": is no key of a rig description";
        return;
      }
    }
  }

  std::string name(const std::string& key) const { return path_.empty() ? key : path_ + "." + key; }
  void fail(const std::string& what, const std::string& expected) {
    if (error_.empty()) error_ = what + ": expected " + expected;
  }

 private:
  const json& value_;
  std::string path_;
  std::string& error_;
  std::vector<std::string> known_;
};

void read_camera(const json& value, const std::string& path, rig_description& out,
                 std::string& error) {
  object_reader object(value, path, error);
  rig_camera& camera = out.cameras.emplace_back();
  object.read("width", camera.details.width, presence::required);
  object.read("height", camera.details.height, presence::required);
  object.read("hfov", camera.details.hfov, presence::required);
  object.read("lens", camera.details.lens, presence::required);
  if (const json* model = object.find("model", presence::required)) {
    object_reader entries(*model, object.name("model"), error);
    for (int key = C_0; key <= LAMBDA; ++key) {
      const auto name = static_cast<parameter_name>(key);
      const char* text = parameter_text(name);
      if (name == LAMBDA && !model->contains(text)) continue;
      entries.read(text, camera.model[name], presence::required);
    }
    entries.refuse_unknown_keys();
  }
  object.refuse_unknown_keys();
}

// A camera number, counted from 1, as an index from 0.
void read_camera_number(const json& value, const std::string& path, std::size_t cameras,
                        std::size_t& out, std::string& error) {
  int number = 0;
  const char* expected = nullptr;
  if (take(value, number, expected) && number >= 1 && static_cast<std::size_t>(number) <= cameras) {
    out = static_cast<std::size_t>(number) - 1;
  } else if (error.empty()) {
    error = path + ": expected a camera number, 1 to " + std::to_string(cameras);
  }
}

void read_series(const json& value, const std::string& path, rig_description& out,
                 std::string& error) {
  object_reader object(value, path, error);
  series_description& series = out.sets.emplace_back();
  object.read("name", series.name, presence::required);
  object.read_list(
      "cameras",
      [&](const json& number, const std::string& number_path) {
        read_camera_number(number, number_path, out.cameras.size(), series.cameras.emplace_back(),
                           error);
      },
      presence::required);
  object.read("frames", series.frames);
  object.refuse_unknown_keys();
}

void read_fault(const json& value, const std::string& path, rig_description& out,
                std::string& error) {
  object_reader object(value, path, error);
  fault_description& fault = out.faults.emplace_back();
  std::string kind, set;
  object.read("kind", kind, presence::required);
  const auto named = std::find_if(fault_names.begin(), fault_names.end(),
                                  [&](const auto& entry) { return kind == entry.second; });
  if (named == fault_names.end()) {
    object.fail(object.name("kind"), "missing_board, truncated_file or missing_file");
  } else {
    fault.fault = named->first;
  }
  object.read("set", set, presence::required);
  const auto series = std::find_if(out.sets.begin(), out.sets.end(),
                                   [&](const auto& entry) { return set == entry.name; });
  if (series == out.sets.end()) object.fail(object.name("set"), "the name of a set");
  fault.series = static_cast<std::size_t>(series - out.sets.begin());
  if (const json* camera = object.find("camera", presence::required)) {
    read_camera_number(*camera, object.name("camera"), out.cameras.size(), fault.camera, error);
  }
  object.read("frame", fault.frame, presence::required);
  object.refuse_unknown_keys();
}

void read_options(object_reader& object, rig_description& out, std::string& error) {
  object.read("seed", out.seed);
  if (const json* value = object.find("board")) {
    object_reader board(*value, "board", error);
    board.read("width", out.board.width);
    board.read("height", out.board.height);
    board.read("square", out.board.square);
    board.refuse_unknown_keys();
  }
  if (const json* value = object.find("poses")) {
    object_reader poses(*value, "poses", error);
    poses.read("min_distance", out.poses.min_distance);
    poses.read("max_distance", out.poses.max_distance);
    poses.read("tilt_degrees", out.poses.tilt_degrees);
    poses.read("roll_degrees", out.poses.roll_degrees);
    poses.refuse_unknown_keys();
  }
  if (const json* value = object.find("rendering")) {
    object_reader rendering(*value, "rendering", error);
    rendering.read("blur", out.rendering.blur);
    rendering.read("noise", out.rendering.noise);
    rendering.read("uneven_light", out.rendering.uneven_light);
    rendering.read("format", out.rendering.format);
    rendering.refuse_unknown_keys();
  }
}

// The double of the shortest decimal that reads back as the same float.
double shortest(float value) {
  char text[64];
  const auto end = std::to_chars(text, text + sizeof text, value).ptr;
  double wide = 0;
  std::from_chars(text, end, wide);
  return wide;
}

ordered_json camera_to_json(const rig_camera& camera) {
  ordered_json model = ordered_json::object();
  for (const auto& [key, value] : camera.model) model[parameter_text(key)] = value;
  return {{"width", camera.details.width},
          {"height", camera.details.height},
          {"hfov", shortest(camera.details.hfov)},
          {"lens", camera.details.lens},
          {"model", model}};
}

ordered_json series_to_json(const series_description& series) {
  ordered_json cameras = ordered_json::array();
  for (const std::size_t camera : series.cameras) cameras.push_back(camera + 1);
  return {{"name", series.name}, {"cameras", cameras}, {"frames", series.frames}};
}

ordered_json fault_to_json(const fault_description& fault, const rig_description& description) {
  const auto named = std::find_if(fault_names.begin(), fault_names.end(),
                                  [&](const auto& entry) { return fault.fault == entry.first; });
  return {{"kind", named->second},
          {"set", description.sets.at(fault.series).name},
          {"camera", fault.camera + 1},
          {"frame", fault.frame}};
}

}  // namespace

std::string rig_to_json(const rig_description& description) {
  ordered_json out;
  out["seed"] = description.seed;
  out["board"] = {{"width", description.board.width},
                  {"height", description.board.height},
                  {"square", description.board.square}};
  out["cameras"] = ordered_json::array();
  for (const rig_camera& camera : description.cameras)
    out["cameras"].push_back(camera_to_json(camera));
  out["sets"] = ordered_json::array();
  for (const series_description& series : description.sets)
    out["sets"].push_back(series_to_json(series));
  out["poses"] = {{"min_distance", description.poses.min_distance},
                  {"max_distance", description.poses.max_distance},
                  {"tilt_degrees", description.poses.tilt_degrees},
                  {"roll_degrees", description.poses.roll_degrees}};
  out["rendering"] = {{"blur", description.rendering.blur},
                      {"noise", description.rendering.noise},
                      {"uneven_light", description.rendering.uneven_light},
                      {"format", description.rendering.format}};
  out["faults"] = ordered_json::array();
  for (const fault_description& fault : description.faults) {
    out["faults"].push_back(fault_to_json(fault, description));
  }
  return out.dump(2) + "\n";
}

std::string rig_from_json(rig_description& description, const std::string& text) {
  json parsed;
  try {
    parsed = json::parse(text);
  } catch (const json::exception& failure) {
    return std::string("not JSON: ") + failure.what();
  }
  description = {};
  std::string error;
  object_reader object(parsed, "", error);
  object.read_list(
      "cameras",
      [&](const json& value, const std::string& path) {
        read_camera(value, path, description, error);
      },
      presence::required);
  read_options(object, description, error);
  object.read_list("sets", [&](const json& value, const std::string& path) {
    read_series(value, path, description, error);
  });
  object.read_list("faults", [&](const json& value, const std::string& path) {
    read_fault(value, path, description, error);
  });
  object.refuse_unknown_keys();
  return error.empty() ? rig_problem(description) : error;
}

std::string read_rig_file(rig_description& description, const std::string& path) {
  std::ifstream in = open_input(path, std::ios::in | std::ios::binary);
  if (!in) return "Couldn't open: " + path;
  const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  const std::string error = rig_from_json(description, text);
  return error.empty() ? error : path + ": " + error;
}

std::string write_rig_file(const rig_description& description, const std::string& path) {
  std::ofstream out = open_output(path);
  if (!out) return "Couldn't open: " + path;
  out << rig_to_json(description);
  return finish_output(out, path) ? std::string() : "Couldn't write: " + path;
}

}  // namespace ocpan
