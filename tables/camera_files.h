#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>

namespace ocpan {

// The file of a camera: the prefix, "_", the id from 0 and the extension.
std::string camera_file(const std::string& prefix, std::uint64_t camera, const char* extension);

// Writes an opened output in full and closes it; a file that can't be written goes away.
// Prints why it fails. Gives an internal result code.
//
//   path   the name that out was opened under
[[nodiscard]] int write_bytes(std::ofstream& out, const std::string& path, const void* bytes,
                              std::size_t count);

}  // namespace ocpan
