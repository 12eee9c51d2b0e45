#include "solver/stage_lists.h"

namespace ocpan {
namespace {

free_parameters first_and_others(std::size_t cameras, const std::vector<parameter_name>& first,
                                 const std::vector<parameter_name>& others) {
  free_parameters lists(cameras, others);
  if (!lists.empty()) lists.front() = first;
  return lists;
}

}  // namespace

free_parameters free_for_lenses(std::size_t cameras) {
  return free_parameters(cameras, {H_0, H_2, V_0, V_1, V_2, L});
}

free_parameters free_for_rig(std::size_t cameras) {
  return first_and_others(cameras, {H_0, H_2, V_0, V_1, V_2, L},
                          {H_0, H_1, H_2, V_0, V_1, V_2, L, A_th, A_ph, O_th, O_ph, C_0, C_1, C_2});
}

free_parameters free_for_all(std::size_t cameras) {
  return first_and_others(cameras, {H_0, H_2, V_0, V_1, V_2, L, O_th, O_ph, rho_0, rho_1, rho_2},
                          {H_0, H_1, H_2, V_0, V_1, V_2, L, A_th, A_ph, C_0, C_1, C_2, O_th, O_ph,
                           rho_0, rho_1, rho_2});
}

std::vector<pose_param_name> free_poses() { return {R_0, R_1, R_2, T_0, T_1, T_2}; }

}  // namespace ocpan
