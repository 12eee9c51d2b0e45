#include "tools/verify/manifest_check.h"

#include <algorithm>

#include "platform/native_path.h"
#include "tables/camera_files.h"

namespace ocpan {
namespace {

void tell(verify_findings& findings, const std::string& subject, const std::string& reason,
          const std::string& advice) {
  findings.push_back({verdict::doubtful, subject, reason, advice});
}

}  // namespace

void check_manifest(const table_manifest& manifest, const table_manifest& now,
                    const std::string& prefix, verify_findings& findings) {
  const std::string again = "run oc_pan " + manifest.maker + " again";
  for (std::size_t camera = 0; camera < manifest.outputs.size(); ++camera) {
    const std::string name = camera_file(prefix, camera, ".bin");
    const auto checksum = checksum_of(name);
    if (checksum && *checksum != manifest.outputs[camera].checksum) {
      tell(findings, native_path(name),
           "isn't the file that oc_pan " + manifest.maker + " wrote (its checksum differs)",
           again + ", or copy it again from where it was made");
    }
  }
  if (manifest.outputs.size() != now.masks.size()) {
    tell(findings, native_path(manifest_name(prefix)),
         "is of " + std::to_string(manifest.outputs.size()) + " cameras, and there are " +
             std::to_string(now.masks.size()) + " masks",
         "give the calibration and the masks that belong together");
  }
  if (manifest.calibration.checksum != now.calibration.checksum) {
    tell(findings, native_path(now.calibration.name),
         "isn't the calibration that " + native_path(prefix) +
             "_0.bin and the others were made "
             "from (" +
             native_path(manifest.calibration.name) + ", its checksum differs)",
         again + " if the calibration is newer, or give the one that was used");
  }
  for (std::size_t i = 0; i < std::min(manifest.masks.size(), now.masks.size()); ++i) {
    if (manifest.masks[i].checksum == now.masks[i].checksum) continue;
    tell(findings, native_path(now.masks[i].name),
         "isn't the mask that " + native_path(camera_file(prefix, i, ".bin")) +
             " was made from (its checksum differs)",
         again + " if the mask is newer, or give the one that was used");
  }
}

void check_same_inputs(const table_manifest& tables, const table_manifest& polygons,
                       verify_findings& findings) {
  const auto differ = [&](const std::string& what) {
    tell(findings, "tables and polygons", "were made with different " + what,
         "run oc_pan lut and oc_pan poly again, both with the same inputs");
  };
  if (tables.calibration.checksum != polygons.calibration.checksum) differ("calibrations");
  const bool same_masks =
      std::equal(tables.masks.begin(), tables.masks.end(), polygons.masks.begin(),
                 polygons.masks.end(), [](const manifest_file& left, const manifest_file& right) {
                   return left.checksum == right.checksum;
                 });
  if (!same_masks) differ("masks");
  if (!tables.project_file && tables.radius != polygons.radius) differ("radii");
}

}  // namespace ocpan
