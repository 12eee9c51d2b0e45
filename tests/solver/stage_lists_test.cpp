#include "solver/stage_lists.h"

#include <gtest/gtest.h>

namespace ocpan {
namespace {

using keys = std::vector<parameter_name>;

TEST(StageLists, OfLensesAreTheSameForAllCameras) {
  const free_parameters lists = free_for_lenses(3);
  ASSERT_EQ(lists.size(), 3u);
  for (const keys& list : lists) EXPECT_EQ(list, (keys{H_0, H_2, V_0, V_1, V_2, L}));
}

TEST(StageLists, OfTheRigHoldTheFirstCamerasFrame) {
  const free_parameters lists = free_for_rig(3);
  EXPECT_EQ(lists[0], (keys{H_0, H_2, V_0, V_1, V_2, L}));
  const keys others = {H_0, H_1, H_2, V_0, V_1, V_2, L, A_th, A_ph, O_th, O_ph, C_0, C_1, C_2};
  EXPECT_EQ(lists[1], others);
  EXPECT_EQ(lists[2], others);
}

TEST(StageLists, OfAllFreeDistortionToo) {
  const free_parameters lists = free_for_all(2);
  EXPECT_EQ(lists[0], (keys{H_0, H_2, V_0, V_1, V_2, L, O_th, O_ph, rho_0, rho_1, rho_2}));
  EXPECT_EQ(lists[1], (keys{H_0, H_1, H_2, V_0, V_1, V_2, L, A_th, A_ph, C_0, C_1, C_2, O_th, O_ph,
                            rho_0, rho_1, rho_2}));
}

TEST(StageLists, OfNoCameraAreEmpty) {
  EXPECT_TRUE(free_for_lenses(0).empty());
  EXPECT_TRUE(free_for_rig(0).empty());
}

TEST(StageLists, FreeAllSixPoseNumbers) {
  EXPECT_EQ(free_poses(), (std::vector<pose_param_name>{R_0, R_1, R_2, T_0, T_1, T_2}));
}

}  // namespace
}  // namespace ocpan
