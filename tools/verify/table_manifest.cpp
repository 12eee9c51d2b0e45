#include "tools/verify/table_manifest.h"

#include <exception>
#include <filesystem>
#include <system_error>

#include <nlohmann/json.hpp>

#include "platform/native_path.h"
#include "platform/text_file.h"
#include "tables/camera_files.h"

namespace ocpan {
namespace {

using json_object = nlohmann::ordered_json;

json_object as_json(const manifest_file& file) {
  return {{"name", file.name}, {"size", file.checksum.size}, {"crc32", file.checksum.crc32}};
}

json_object as_json(const std::vector<manifest_file>& files) {
  json_object list = json_object::array();
  for (const manifest_file& file : files) list.push_back(as_json(file));
  return list;
}

manifest_file file_from(const json_object& json) {
  return {json.at("name").get<std::string>(),
          {json.at("size").get<std::uintmax_t>(), json.at("crc32").get<std::uint32_t>()}};
}

std::vector<manifest_file> files_from(const json_object& json) {
  std::vector<manifest_file> files;
  for (const json_object& one : json) files.push_back(file_from(one));
  return files;
}

}  // namespace

std::string manifest_name(const std::string& output_prefix) {
  return output_prefix + "_manifest.json";
}

void add_inputs(table_manifest& manifest, const std::string& calibration,
                const std::string& mask_prefix, std::size_t cameras) {
  manifest.calibration = {calibration, checksum_of(calibration).value_or(file_checksum())};
  for (std::size_t camera = 0; camera < cameras; ++camera) {
    const std::string name = camera_file(mask_prefix, camera, ".png");
    const std::optional<file_checksum> checksum = checksum_of(name);
    if (!checksum) return;
    manifest.masks.push_back({name, *checksum});
  }
}

std::string write_manifest(table_manifest manifest, const std::string& output_prefix,
                           std::size_t cameras) {
  manifest.masks.resize(cameras);
  manifest.outputs.clear();
  for (std::size_t camera = 0; camera < cameras; ++camera) {
    const std::string name = camera_file(output_prefix, camera, ".bin");
    const std::optional<file_checksum> checksum = checksum_of(name);
    if (!checksum) return name + " can't be read again; see that nobody takes it away";
    manifest.outputs.push_back({name, *checksum});
  }
  const json_object json = {{"maker", manifest.maker},
                            {"version", manifest.version},
                            {"parameters",
                             {{"radius", manifest.radius},
                              {"face_size", manifest.face_size},
                              {"project_file", manifest.project_file}}},
                            {"calibration", as_json(manifest.calibration)},
                            {"masks", as_json(manifest.masks)},
                            {"outputs", as_json(manifest.outputs)}};
  const std::string path = manifest_name(output_prefix);
  std::ofstream out = open_output(path);
  out << json.dump(2, ' ', false, json_object::error_handler_t::replace) << '\n';
  if (finish_output(out, path)) return {};
  return native_path(path) + " can't be written; allow it, or free space on its disk";
}

std::optional<table_manifest> read_manifest(const std::string& output_prefix,
                                            std::string& problem) {
  const std::string path = manifest_name(output_prefix);
  std::error_code failure;
  if (!std::filesystem::exists(native_path(path), failure)) return std::nullopt;
  std::ifstream in = open_input(path);
  try {
    const json_object json = json_object::parse(in);
    const json_object& parameters = json.at("parameters");
    table_manifest manifest;
    manifest.maker = json.at("maker").get<std::string>();
    manifest.version = json.at("version").get<std::string>();
    manifest.radius = parameters.at("radius").get<float>();
    manifest.face_size = parameters.at("face_size").get<int>();
    manifest.project_file = parameters.at("project_file").get<bool>();
    manifest.calibration = file_from(json.at("calibration"));
    manifest.masks = files_from(json.at("masks"));
    manifest.outputs = files_from(json.at("outputs"));
    return manifest;
  } catch (const nlohmann::json::exception&) {
    problem = native_path(path) + " is no manifest";
  }
  return std::nullopt;
}

}  // namespace ocpan
