// Runs of cameras that differ in their pictures' sizes, fields of view or lenses: which facts
// of which camera are asked.

#include "production/camera_overlap.h"
#include "tests/production/coarse_run.h"

namespace ocpan {
namespace {

using testing::fixture_job;
using testing::fixture_rig;

// A camera's picture as the overlap sees it.
struct outlined_camera {
  const rig_camera& camera;
  bool circular;
};

// Whether the rim of one camera crosses the spokes of another.
bool crosses(const outlined_camera& rim, const outlined_camera& spokes) {
  const camera_details& a = rim.camera.details;
  const camera_details& b = spokes.camera.details;
  return cameras_overlap(build_rim_arcs(rim.camera.model, a.width, a.height, rim.circular),
                         build_spoke_arcs(spokes.camera.model, b.width, b.height, spokes.circular));
}

class UnlikeCameras : public testing::ProductionRun {
 protected:
  // The second camera stands turned by some degrees about y.
  static rig_description two_cameras(const camera_details& first, const camera_details& second,
                                     double step_degrees) {
    rig_description description = fixture_rig(2, first, step_degrees, 30);
    description.cameras[1] = fixture_rig(2, second, step_degrees, 30).cameras[1];
    return description;
  }
  // Runs a job. Whether the pair is kept shows in the pictures of its matches.
  bool keeps_the_pair(const rig_description& description) {
    const testing::temp_folder files;
    fixture_job job = render_job(description, files.path().string(), {2, 0.05, 0.0005, 1});
    std::filesystem::remove_all("tmp");
    std::filesystem::create_directory("tmp");
    result_ = run(job);
    mean_error_ = job.mean_error();
    EXPECT_TRUE(std::filesystem::exists("tmp/1.white_quads_1.jpg"));
    return std::filesystem::exists("tmp/2.naive_matches_01_0.jpg");
  }

  int result_ = 99;
  double mean_error_ = 0;
};

TEST_F(UnlikeCameras, AreRefinedTogether) {
  EXPECT_TRUE(keeps_the_pair(two_cameras({480, 360, 120, 1}, {400, 420, 110, 1}, 60)));
  EXPECT_EQ(result_, code::success);
  EXPECT_LT(mean_error_, 0.1);
}

TEST_F(UnlikeCameras, OverlapByTheirOwnSizes) {
  // The quarter of the second picture that has the size of the first lies on the far side.
  const rig_description wide = two_cameras({320, 240, 120, 1}, {640, 480, 120, 1}, 110);
  rig_camera shrunk = wide.cameras[1];
  shrunk.details = wide.cameras[0].details;
  ASSERT_TRUE(crosses({wide.cameras[0], false}, {wide.cameras[1], false}));
  ASSERT_FALSE(crosses({wide.cameras[0], false}, {shrunk, false}));
  EXPECT_TRUE(keeps_the_pair(wide));
}

TEST_F(UnlikeCameras, OverlapWhereTheRimOfTheFirstCrossesTheSecond) {
  // All that the narrow camera sees lies within the wide one's view, the rim of which it
  // doesn't reach.
  const camera_details wide{480, 360, 160, 1}, narrow{480, 360, 70, 1};
  EXPECT_FALSE(keeps_the_pair(two_cameras(wide, narrow, 30)));
  EXPECT_EQ(printed_, "Error detected!\n");
  EXPECT_TRUE(keeps_the_pair(two_cameras(narrow, wide, 30)));
  EXPECT_EQ(printed_, "");
}

TEST_F(UnlikeCameras, OverlapByTheirCirclesWithLens2) {
  // The circles are 20 degrees apart, the pictures' corners beyond them are not.
  const rig_description round = two_cameras({400, 400, 120, 2}, {400, 400, 120, 2}, 140);
  const rig_camera& first = round.cameras[0];
  const rig_camera& second = round.cameras[1];
  ASSERT_FALSE(crosses({first, true}, {second, true}));
  ASSERT_TRUE(crosses({first, false}, {second, false}));
  EXPECT_FALSE(keeps_the_pair(round));
}

TEST_F(UnlikeCameras, OverlapByTheBorderWithAnotherLens) {
  // The corner of the first picture reaches into the circle of the second.
  const rig_description mixed = two_cameras({400, 400, 120, 1}, {400, 400, 120, 2}, 140);
  const rig_camera& first = mixed.cameras[0];
  const rig_camera& second = mixed.cameras[1];
  ASSERT_TRUE(crosses({first, false}, {second, true}));
  ASSERT_FALSE(crosses({first, true}, {second, true}));
  ASSERT_FALSE(crosses({first, true}, {second, false}));
  EXPECT_TRUE(keeps_the_pair(mixed));
}

}  // namespace
}  // namespace ocpan
