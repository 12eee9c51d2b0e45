#include "tests/faults/export_jobs.h"

#include <array>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>

#include <opencv2/imgcodecs.hpp>

#include "include/oc_pan_cal.h"
#include "model/rigid_rotation.h"
#include "simulator/board_series.h"
#include "simulator/fixture_run.h"
#include "simulator/masks.h"
#include "tests/support/temp_folder.h"

namespace ocpan::faults {
namespace {

namespace fs = std::filesystem;

// Two cameras of few pixels that overlap.
rig_description small_rig(int width, float hfov_degrees, int lens, double step_degrees) {
  rig_description description;
  for (int c = 0; c < 2; ++c) {
    rig_camera camera;
    camera.details = {width, width * 3 / 4, hfov_degrees, lens};
    camera.model = initial_model(camera.details);
    const Eigen::Vector3d turn(0, step_degrees * c * pi / 180, 0);
    camera.model = rotate_model(camera.model, rotation_from_vector(turn));
    description.cameras.push_back(camera);
  }
  return description;
}

std::string write_boards(const fs::path& folder) {
  rig_description description = small_rig(160, 70, 0, 0);
  description.cameras[1].model[C_0] = 20;
  description.board = {4, 3, 25};
  description.sets = {{"one", {0}, 3}, {"two", {1}, 3}, {"both", {0, 1}, 3}};
  description.poses = {130, 190, 25, 15};
  description.rendering.noise = 0.5;
  fs::create_directory(folder / "tmp");
  const std::string problem = write_board_series(description, folder.string(), {});
  // The same wherever the folder is.
  std::string configuration = testing::read_file(folder / "calibration.txt");
  for (std::size_t at; (at = configuration.find(folder.string())) != std::string::npos;) {
    configuration.erase(at, folder.string().size()).insert(at, 1, '.');
  }
  testing::write_file(folder / "calibration.txt", configuration);
  return problem;
}

std::string write_fixture_job(const fs::path& folder) {
  const rig_description description = small_rig(96, 120, 1, 60);
  fixture_description fixture;
  fixture.cell_degrees = 15;
  fixture_files files;
  fs::create_directory(folder / "tmp");
  return write_fixture(files, folder.string(), description, fixture, {5, 0.05, 0.0005, 1});
}

std::string write_table_job(const fs::path& folder) {
  const rig_description description = small_rig(96, 120, 1, 90);
  fixture_files files;
  const std::string problem = write_fixture(files, folder.string(), description, {}, {});
  if (!problem.empty()) return problem;
  std::ofstream(folder / "rig.pts") << "p f2 w200 h100 v360\n"
                                       "i w96 h72 f3 v120 r0 p0 y0 a0 b0 c0 d0 e0 g0 t0\n"
                                       "i w96 h72 f3 v=0 r0 p0 y90 a=0 b=0 c=0 d=0 e=0 g=0 t=0\n";
  return write_masks(folder.string(), description, 5);
}

std::string write_square(const fs::path& folder) {
  cv::Mat square(32, 32, CV_8UC3);
  cv::RNG(1).fill(square, cv::RNG::UNIFORM, 0, 255);
  const bool written = cv::imwrite((folder / "square.png").string(), square) &&
                       cv::imwrite((folder / "square.jpg").string(), square);
  return written ? "" : "The square can't be written";
}

export_job table_job(const char* name, const char* calibration, bool polygons, int file_class) {
  export_job job;
  job.name = name;
  job.outputs = {"out_0.bin", "out_1.bin"};
  job.run = [=] {
    return polygons ? ocPAN_PolyFromCalibration(calibration, "mask", "out", 1, file_class)
                    : ocPAN_LutFromCalibration(calibration, "mask", "out", 1, 1, file_class);
  };
  return job;
}

export_job overlay_job(const char* name, const char* input, const char* output) {
  export_job job;
  job.name = name;
  job.outputs = {output};
  job.loses_output_silently = true;
  job.run = [=] { return ocPAN_CreateOsd(input, output, 64, 20); };
  return job;
}

export_job calibration_job() {
  export_job job;
  job.name = "cal";
  job.outputs = {"found.cal"};
  job.reports = {"found.cal_distance.csv", "found.cal_QA_Measures.txt"};
  job.prints_on_success = true;
  job.run = [] {
    qa_summary summary;
    return ocPAN_Cal("calibration.txt", &summary);
  };
  return job;
}

export_job production_job() {
  export_job job;
  job.name = "prod";
  job.outputs = {"refined.txt"};
  job.writes_last = true;
  job.reports = {"tmp/Prod_QA_Measures.txt"};
  job.run = [] {
    const std::array<const char*, 2> pictures = {"fixture_1.png", "fixture_2.png"};
    std::array<double, 3> results{};
    std::srand(1);  // as in a fresh process
    return ocPAN_CalProd(2, "disturbed.txt", "refined.txt", 1, pictures.data(), results.data());
  };
  return job;
}

export_job mask_job() {
  export_job job;
  job.name = "mask";
  job.outputs = {"weights_0.bin", "weights_1.bin"};
  job.run = [] {
    const std::array<const char*, 2> masks = {"mask_0.png", "mask_1.png"};
    const std::array<const char*, 2> weights = {"weights_0.bin", "weights_1.bin"};
    return ocPAN_MaskTransform(2, masks.data(), weights.data());
  };
  return job;
}

export_job version_job() {
  export_job job;
  job.name = "version";
  job.run = [] {
    std::array<char, 128> version{};
    return ocPAN_Version(version.data());
  };
  return job;
}

export_job round_job() {
  // By its address: a plain call is the C math library's.
  void* const library = dlopen("liboc_pan_cal.so.1", RTLD_NOW | RTLD_NOLOAD);
  const auto rounded = reinterpret_cast<double (*)(double)>(dlsym(library, "round"));
  export_job job;
  job.name = "round";
  job.run = [=] { return rounded(2.5) == 3 ? OCPAN_SUCCESS : OCPAN_FAILURE; };
  return job;
}

}  // namespace

std::vector<export_job> export_jobs() {
  return {calibration_job(),
          production_job(),
          table_job("lut", "true.txt", false, 1),
          table_job("lut-project", "rig.pts", false, 0),
          table_job("poly", "true.txt", true, 1),
          table_job("poly-project", "rig.pts", true, 0),
          overlay_job("osd", "square.png", "overlay.png"),
          overlay_job("osd-jpeg", "square.jpg", "overlay.jpg"),
          mask_job(),
          version_job(),
          round_job()};
}

std::string write_job_inputs(const std::string& folder) {
  for (const export_job& job : export_jobs()) {
    const fs::path inputs = fs::path(folder) / job.name;
    fs::create_directories(inputs);
    std::string problem;
    if (job.name == "cal") {
      problem = write_boards(inputs);
    } else if (job.name == "prod") {
      problem = write_fixture_job(inputs);
    } else if (job.name.starts_with("osd")) {
      problem = write_square(inputs);
    } else if (job.name != "version" && job.name != "round") {
      problem = write_table_job(inputs);
    }
    if (!problem.empty()) return job.name + ": " + problem;
  }
  return "";
}

}  // namespace ocpan::faults
