#include <cstdio>

#include <gtest/gtest.h>

#include "tests/production/fixture_job.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::fixture_job;
using testing::fixture_rig;

struct scenario {
  const char* name;
  std::size_t cameras;
  camera_details details;
  double step_degrees;
  double stand_off_mm;
  double barrel;  // rho_1
};

void PrintTo(const scenario& told, std::ostream* out) { *out << told.name; }

// Lens 0 needs a distortion of its own: without one the place of its axis means nothing.
const scenario scenarios[] = {
    {"2 of lens 1, 120 degrees", 2, {1280, 960, 120, 1}, 60, 30, 0},
    {"ring of 4 of lens 1, 140 degrees", 4, {1280, 960, 140, 1}, 90, 30, 0},
    {"ring of 6 of lens 1, 116 degrees", 6, {1280, 960, 116, 1}, 60, 30, 0},
    {"ring of 8 of lens 1, 110 degrees", 8, {960, 720, 110, 1}, 45, 30, 0},
    {"2 back to back of lens 2, 220 degrees", 2, {1280, 1280, 220, 2}, 180, 10, 0},
    {"4 of lens 0, 110 degrees", 4, {1280, 960, 110, 0}, 60, 30, -0.05},
};

class ProductionSeam : public ::testing::TestWithParam<scenario> {
 protected:
  ProductionSeam() { std::filesystem::create_directory("tmp"); }

  // A job whose cameras are turned against one another by up to some cells, and its run.
  fixture_job run_turned_by(double cells) {
    const scenario& told = GetParam();
    const rig_description description =
        fixture_rig(told.cameras, told.details, told.step_degrees, told.stand_off_mm, told.barrel);
    const fixture_description fixture = suitable_fixture(description);
    fixture_job job(description, fixture, {cells * fixture.cell_degrees, 0.05, 0.0005, 1},
                    folder_.path().string());
    EXPECT_EQ(job.run(), code::success);
    std::printf(
        "%s, turned by %g cells: seam %.4f -> %.4f degrees, reprojection %.4f pixels in the mean, "
        "%.3f at most, %g samples\n",
        told.name, cells, job.seam_before(), job.seam_after(), job.mean_error(), job.max_error(),
        job.samples());
    return job;
  }
  testing::working_folder folder_;
};

TEST_P(ProductionSeam, ClosesOverMostOfACell) {
  const fixture_job job = run_turned_by(0.8);
  EXPECT_LT(job.seam_after(), 0.03);
  EXPECT_LT(job.seam_after(), 0.1 * job.seam_before());
  EXPECT_LT(job.mean_error(), 0.1);
}

// The pattern looks the same a cell further on, so the run succeeds on wrong cells. Only
// the errors can tell: with the matches of one place forced on another the worst of them
// are large.
TEST_P(ProductionSeam, StaysOpenOverTwoCells) {
  const fixture_job job = run_turned_by(2);
  EXPECT_GT(job.seam_after(), 1);
  EXPECT_GT(job.mean_error(), 0.2);
  EXPECT_GT(job.max_error(), 2);
}

// Cells on opposite sides of the sphere are partners too. On a ring with the pattern all
// round no guess finds the rotations among them, and the cameras stay where they were.
TEST(ProductionSearch, FindsNothingOnARingWithThePatternAllRound) {
  const testing::working_folder folder;
  std::filesystem::create_directory("tmp");
  const rig_description description = fixture_rig(4, {1280, 960, 140, 1}, 90, 30);
  fixture_description fixture = suitable_fixture(description);
  fixture.low_latitude_degrees = -60;
  fixture_job job(description, fixture, {0.8 * fixture.cell_degrees, 0.05, 0.0005, 1}, ".");
  EXPECT_EQ(job.run(), code::success);
  std::printf("pattern all round: seam %.4f -> %.4f degrees, reprojection %.4f pixels\n",
              job.seam_before(), job.seam_after(), job.mean_error());
  EXPECT_GT(job.seam_after(), 1);
  EXPECT_GT(job.mean_error(), 0.5);
}

INSTANTIATE_TEST_SUITE_P(Fixtures, ProductionSeam, ::testing::ValuesIn(scenarios));

}  // namespace
}  // namespace ocpan
