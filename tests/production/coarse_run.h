#pragma once

#include <filesystem>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "tests/production/fixture_job.h"
#include "tests/support/captured_output.h"
#include "tests/support/temp_folder.h"

namespace ocpan::testing {

// Two cameras before a coarse pattern: small pictures, and a run of a fraction of a second.
class ProductionRun : public ::testing::Test {
 protected:
  ProductionRun() { std::filesystem::create_directory("tmp"); }

  static fixture_job render_job(const rig_description& description, const std::string& folder,
                                const fixture_disturbance& disturbance, double radius_mm = 1000) {
    fixture_description fixture = suitable_fixture(description);
    fixture.cell_degrees = 7.5;
    fixture.radius_mm = radius_mm;
    return {description, fixture, disturbance, folder};
  }
  static fixture_job render_job(double step_degrees, const std::string& folder,
                                const fixture_disturbance& disturbance = {0.7 * 7.5, 0.05, 0.0005,
                                                                          1}) {
    return render_job(fixture_rig(2, {480, 360, 120, 1}, step_degrees, 30), folder, disturbance);
  }
  // A job whose cameras overlap, rendered once for all tests.
  static fixture_job make_job() {
    static const temp_folder folder;
    static const fixture_job rendered = render_job(60, folder.path().string());
    return {rendered, "."};
  }
  int run(fixture_job& job) {
    int result = 99;
    printed_ = printed_by([&] { result = job.run(); });
    return result;
  }
  static std::set<std::string> names_in_tmp() {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("tmp")) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }
  // Runs a job that is to fail, over an older output that must not be touched.
  void expect_failure(fixture_job& job, int result, const std::string& words) {
    write_file(job.output(), "older");
    EXPECT_EQ(run(job), result);
    EXPECT_EQ(printed_, words);
    EXPECT_EQ(read_file(job.output()), "older");
    EXPECT_FALSE(std::filesystem::exists("tmp/Prod_QA_Measures.txt"));
  }
  static void blank(const std::string& picture) {
    cv::imwrite(picture, cv::Mat(360, 480, CV_8UC1, cv::Scalar(128)));
  }

  working_folder folder_;
  std::string printed_;
};

}  // namespace ocpan::testing
