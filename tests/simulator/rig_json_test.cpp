#include "simulator/rig_json.h"

#include <gtest/gtest.h>

#include "simulator/presets.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

rig_description example() {
  rig_description description;
  EXPECT_EQ(make_preset(description, "2-lens2-unlike"), "");
  description.seed = 18446744073709551615u;
  description.board = {11, 8, 12.3};
  description.cameras[1].details.hfov = 179.9f;
  description.poses = {100.5, 900.25, 12, 34};
  description.rendering = {0.5, 3.25, 0.1, "jpg"};
  description.faults = {{picture_fault::truncated_file, 2, 1, 3},
                        {picture_fault::missing_file, 0, 0, 0},
                        {picture_fault::missing_board, 1, 1, 11}};
  return description;
}

// What reading gives when one stretch of the example's text is another.
std::string error_with(const std::string& from, const std::string& to) {
  std::string text = rig_to_json(example());
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  if (at != std::string::npos) text.replace(at, from.size(), to);
  rig_description description;
  return rig_from_json(description, text);
}

TEST(RigJson, EveryNumberSurvivesTheRoundTrip) {
  const rig_description before = example();
  rig_description after;
  ASSERT_EQ(rig_from_json(after, rig_to_json(before)), "");
  ASSERT_EQ(after.cameras.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(after.cameras[i].model, before.cameras[i].model);
    EXPECT_EQ(after.cameras[i].details.width, before.cameras[i].details.width);
    EXPECT_EQ(after.cameras[i].details.height, before.cameras[i].details.height);
    EXPECT_EQ(after.cameras[i].details.hfov, before.cameras[i].details.hfov);
    EXPECT_EQ(after.cameras[i].details.lens, before.cameras[i].details.lens);
  }
  EXPECT_EQ(after.seed, before.seed);
  EXPECT_EQ(after.board.square, 12.3);
  EXPECT_EQ(after.poses.max_distance, 900.25);
  EXPECT_EQ(after.rendering.format, "jpg");
  ASSERT_EQ(after.sets.size(), 3u);
  EXPECT_EQ(after.sets[2].cameras, (std::vector<std::size_t>{0, 1}));
  ASSERT_EQ(after.faults.size(), 3u);
  EXPECT_EQ(after.faults[0].fault, picture_fault::truncated_file);
  EXPECT_EQ(after.faults[0].series, 2u);
  EXPECT_EQ(after.faults[0].camera, 1u);
  EXPECT_EQ(after.faults[0].frame, 3);
  EXPECT_EQ(rig_to_json(after), rig_to_json(before));
}

TEST(RigJson, CountsCamerasFromOneAndNamesSets) {
  const std::string text = rig_to_json(example());
  EXPECT_NE(text.find("\"set\": \"pair12\",\n      \"camera\": 2,\n      \"frame\": 3"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\"hfov\": 179.9,"), std::string::npos);
}

TEST(RigJson, WhatIsLeftOutHasItsDefault) {
  std::string text = rig_to_json(example());
  text.replace(0, text.find("\"cameras\""), "{");
  text.replace(text.rfind(",\n  \"sets\""), std::string::npos, "}");
  rig_description description;
  ASSERT_EQ(rig_from_json(description, text), "");
  EXPECT_EQ(description.seed, 1u);
  EXPECT_EQ(description.board.width, 9);
  EXPECT_EQ(description.rendering.format, "png");
  EXPECT_TRUE(description.sets.empty());
}

TEST(RigJson, ErrorsNameTheKey) {
  EXPECT_EQ(error_with("\"seed\": 18446744073709551615", "\"seed\": -1"),
            "seed: expected a whole number, 0 or above");
  EXPECT_EQ(error_with("\"seed\"", "\"sed\""), "sed: is no key of a rig description");
  EXPECT_EQ(error_with("\"board\": {", "\"board\": 3, \"b\": {"), "board: expected an object");
  EXPECT_EQ(error_with("\"square\": 12.3", "\"square\": \"wide\""),
            "board.square: expected a number");
  EXPECT_EQ(error_with("\"width\": 11", "\"width\": 2"),
            "board.width: expected 3 to 40 inner corners");
  EXPECT_EQ(error_with("\"height\": 8", "\"height\": 8.5"),
            "board.height: expected a whole number");
  EXPECT_EQ(error_with("\"height\": 8", "\"height\": 80000000000"),
            "board.height: expected a whole number");
  EXPECT_EQ(error_with("\"lens\": 2", "\"lens\": 3"), "cameras[0].lens: expected 0, 1 or 2");
  EXPECT_EQ(error_with("\"lens\": 2,", ""), "cameras[0].lens: is missing");
  EXPECT_EQ(error_with("\"A_ph\"", "\"A_phi\""), "cameras[0].model.A_ph: is missing");
  EXPECT_EQ(error_with("\"A_ph\"", "\"rho_3\": 0, \"A_ph\""),
            "cameras[0].model.rho_3: is no key of a rig description");
  EXPECT_EQ(error_with("\"name\": \"pair12\"", "\"name\": \"pair 12\""),
            "faults[0].set: expected the name of a set");
  EXPECT_EQ(error_with("\"name\": \"cam2\"", "\"name\": \"cam1\""),
            "faults[2].set: expected the name of a set");
  EXPECT_EQ(error_with("\"frames\": 12", "\"frames\": 0"), "sets[0].frames: expected 1 to 1000");
  EXPECT_EQ(error_with("\"hfov\": 220.0", "\"hfov\": 1e300"), "cameras[0].hfov: expected a number");
  EXPECT_EQ(error_with("\"min_distance\": 100.5", "\"min_distance\": 901"),
            "poses.max_distance: expected a length not below min_distance");
  EXPECT_EQ(error_with("\"format\": \"jpg\"", "\"format\": \"bmp\""),
            "rendering.format: expected \"png\" or \"jpg\"");
  EXPECT_EQ(error_with("\"kind\": \"missing_file\"", "\"kind\": \"lost\""),
            "faults[1].kind: expected missing_board, truncated_file or missing_file");
  EXPECT_EQ(error_with("\"frame\": 11", "\"frame\": 12"), "faults[2].frame: expected 0 to 11");
}

TEST(RigJson, ErrorsNameCamerasAsTheyCountInTheText) {
  EXPECT_EQ(error_with("\"cameras\": [\n        1,\n        2\n", "\"cameras\": [1, 3"),
            "sets[2].cameras[1]: expected a camera number, 1 to 2");
  EXPECT_EQ(error_with("\"cameras\": [\n        1,\n        2\n", "\"cameras\": [0, 1"),
            "sets[2].cameras[0]: expected a camera number, 1 to 2");
  EXPECT_EQ(error_with("\"cameras\": [\n        1,\n        2\n", "\"cameras\": [1, 1"),
            "sets[2].cameras: a camera stands there twice");
}

TEST(RigJson, BrokenTextIsToldWithItsPlace) {
  rig_description description;
  const std::string error = rig_from_json(description, "{\"seed\": 1,\n \"board\" 3}");
  EXPECT_TRUE(error.starts_with("not JSON: ")) << error;
  EXPECT_NE(error.find("line 2"), std::string::npos) << error;
  EXPECT_NE(rig_from_json(description, "{\"seed\": 1e999}").find("1e999"), std::string::npos);
  EXPECT_EQ(rig_from_json(description, "[]"), "the text: expected an object");
  EXPECT_EQ(rig_from_json(description, "{}"), "cameras: is missing");
}

TEST(RigProblem, NamesWhatAFileCannotShow) {
  rig_description description = example();
  description.sets[0].name = "cam 1";
  EXPECT_EQ(rig_problem(description), "sets[0].name: expected letters, digits and \"_\"");
  description = example();
  description.sets[1].name = "cam1";
  EXPECT_EQ(rig_problem(description), "sets[1].name: another set has this name");
  description = example();
  description.cameras[0].model.erase(V_2);
  EXPECT_EQ(rig_problem(description), "cameras[0].model.V_2: is missing");
  description = example();
  description.faults[0].series = 1;
  description.faults[0].camera = 0;
  EXPECT_EQ(rig_problem(description), "faults[0].camera: expected a camera of the set");
  description.cameras.clear();
  EXPECT_EQ(rig_problem(description), "cameras: expected 1 to 8 of them");
}

TEST(RigFile, IsWrittenAndReadBack) {
  const testing::temp_folder folder;
  ASSERT_EQ(write_rig_file(example(), folder.file("rig.json")), "");
  rig_description description;
  ASSERT_EQ(read_rig_file(description, folder.file("rig.json")), "");
  EXPECT_EQ(rig_to_json(description), rig_to_json(example()));
}

TEST(RigFile, ErrorsNameTheFile) {
  const testing::temp_folder folder;
  rig_description description;
  EXPECT_EQ(read_rig_file(description, folder.file("none.json")),
            "Couldn't open: " + folder.file("none.json"));
  EXPECT_EQ(write_rig_file(example(), folder.file("none/rig.json")),
            "Couldn't open: " + folder.file("none/rig.json"));
  testing::write_file(folder.path() / "bad.json", "{}");
  EXPECT_EQ(read_rig_file(description, folder.file("bad.json")),
            folder.file("bad.json") + ": cameras: is missing");
}

}  // namespace
}  // namespace ocpan
