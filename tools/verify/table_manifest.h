#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/verify/file_checksum.h"

namespace ocpan {

// A file of a manifest. Its name is for people: files may be moved together.
struct manifest_file {
  std::string name;
  file_checksum checksum;
};

// What the tables of a rig were made from, and how.
struct table_manifest {
  std::string maker;    // "lut" or "poly"
  std::string version;  // of the tool
  float radius = 0;     // of the sphere, 1000 units of the calibration
  int face_size = 0;    // of lookup tables, otherwise 0
  bool project_file = false;
  manifest_file calibration;
  std::vector<manifest_file> masks;    // by camera
  std::vector<manifest_file> outputs;  // by camera
};

// The manifest's name: PREFIX_manifest.json beside PREFIX_0.bin and so on.
std::string manifest_name(const std::string& output_prefix);

// Takes the checksum of a calibration and of the masks of so many cameras, as far as they
// are there.
void add_inputs(table_manifest& manifest, const std::string& calibration,
                const std::string& mask_prefix, std::size_t cameras);

// Takes the checksums of the outputs of so many cameras, forgets the masks of others, and
// writes the manifest. Gives an error text, empty if all is well.
[[nodiscard]] std::string write_manifest(table_manifest manifest, const std::string& output_prefix,
                                         std::size_t cameras);

// Reads the manifest of a prefix. Nothing if there is none; `problem` tells of one that
// can't be read.
std::optional<table_manifest> read_manifest(const std::string& output_prefix, std::string& problem);

}  // namespace ocpan
