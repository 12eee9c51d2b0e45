#include "calfiles/selen360_cal_file.h"

#include <filesystem>
#include <iostream>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "src/result_codes.h"
#include "tests/calfiles/wide_lens.h"
#include "tests/support/captured_output.h"
#include "tests/support/comma_locale.h"
#include "tests/support/temp_folder.h"

namespace ocpan {
namespace {

using testing::comma_locale;
using testing::printed_by;
using testing::read_text;
using testing::temp_folder;
using testing::wide_lens;
using testing::write_file;

// A calibration read from a text, with what the reading gave and printed.
struct loaded {
  explicit loaded(const std::string& text) {
    const temp_folder folder;
    write_file(folder.file("rig.cal"), text);
    printed = printed_by([&] { result = file.load(folder.file("rig.cal").c_str()); });
  }
  selen360_cal_file file{1.0f};
  int result = 0;
  std::string printed;
};

TEST(CalFileSave, WritesDetailLinesThenModelLines) {
  const temp_folder folder;
  const selen360_cal_file file({{{C_0, 0.0}, {H_2, -320.0}, {LAMBDA, 1.0}}, {{L, -0.5}}},
                               {{1280, 960, 190.5f, 1}, {640, 480, 62.0f, 0}});
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(file.save(folder.file("rig.cal")), code::success); }), "");
  EXPECT_EQ(read_text(folder.file("rig.cal")),
            "Width:1280 Height:960 Lens:1 Hfov:190.5\n"
            "Width:640 Height:480 Lens:0 Hfov:62\n"
            "C_0:0 H_2:-320 LAMBDA:1\n"
            "L:-0.5\n");
}

TEST(CalFileSave, NamesEveryParameterInOrder) {
  const temp_folder folder;
  model_map model;
  for (int key = 0; key < parameter_count; ++key) model[static_cast<parameter_name>(key)] = key;
  EXPECT_EQ(selen360_cal_file({model}, {}).save(folder.file("rig.cal")), code::success);
  EXPECT_EQ(read_text(folder.file("rig.cal")),
            "C_0:0 C_1:1 C_2:2 A_th:3 A_ph:4 H_0:5 H_1:6 H_2:7 V_0:8 V_1:9 V_2:10 O_th:11 O_ph:12 "
            "rho_0:13 rho_1:14 rho_2:15 L:16 LAMBDA:17\n");
}

TEST(CalFileSave, LeavesOutKeysWithoutAName) {
  const temp_folder folder;
  const auto before = static_cast<parameter_name>(-1), behind = static_cast<parameter_name>(18);
  const selen360_cal_file file(
      {{{before, 5.0}, {C_0, 1.0}, {LAMBDA, 2.0}, {behind, 3.0}}, {{L, 4.0}}}, {});
  EXPECT_EQ(file.save(folder.file("rig.cal")), code::success);
  EXPECT_EQ(read_text(folder.file("rig.cal")), "C_0:1 LAMBDA:2\nL:4\n");
}

TEST(CalFileSave, KeepsSixSignificantDigits) {
  const temp_folder folder;
  const selen360_cal_file file({{{C_0, 3.14159265}, {C_1, 1234567.0}, {C_2, -0.0000123456789}}},
                               {{1, 2, 62.3456789f, 2}});
  EXPECT_EQ(file.save(folder.file("rig.cal")), code::success);
  EXPECT_EQ(read_text(folder.file("rig.cal")),
            "Width:1 Height:2 Lens:2 Hfov:62.3457\n"
            "C_0:3.14159 C_1:1.23457e+06 C_2:-1.23457e-05\n");
}

TEST(CalFileSave, ReplacesALongerFile) {
  const temp_folder folder;
  write_file(folder.file("rig.cal"), std::string(1000, 'x'));
  EXPECT_EQ(selen360_cal_file({{{C_0, 1.0}}}, {}).save(folder.file("rig.cal")), code::success);
  EXPECT_EQ(read_text(folder.file("rig.cal")), "C_0:1\n");
}

TEST(CalFileSave, PaysNoHeedToTheHostsLocale) {
  const temp_folder folder;
  const comma_locale host;
  const selen360_cal_file file({{{C_0, 1234.5}}}, {{1280, 960, 0.5f, 1}});
  EXPECT_EQ(file.save(folder.file("rig.cal")), code::success);
  selen360_cal_file back(1.0f);
  EXPECT_EQ(back.load(folder.file("rig.cal").c_str()), code::success);
  EXPECT_EQ(read_text(folder.file("rig.cal")),
            "Width:1280 Height:960 Lens:1 Hfov:0.5\nC_0:1234.5\n");
  EXPECT_EQ(back.models().at(0).at(C_0), 1234.5);
}

TEST(CalFileSave, TellsWhatItCantOpen) {
  const temp_folder folder;
  const std::string name = folder.file("missing\\rig.cal");
  int result = 0;
  EXPECT_EQ(printed_by([&] { result = selen360_cal_file(1.0f).save(name); }),
            "Couldn't open: " + name + "\n");
  EXPECT_EQ(result, code::output_unopened);
}

TEST(CalFileSave, CantWriteOverAFolder) {
  const temp_folder folder;
  const std::string name = folder.path().string();
  int result = 0;
  EXPECT_EQ(printed_by([&] { result = selen360_cal_file(1.0f).save(name); }),
            "Couldn't open: " + name + "\n");
  EXPECT_EQ(result, code::output_unopened);
}

TEST(CalFileSave, TellsOfAFullDisk) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  int result = 0;
  EXPECT_EQ(printed_by([&] {
              result = selen360_cal_file({{{C_0, 1.0}}}, {{}}).save("/dev/full");
            }),
            "Error writing output file: /dev/full\n");
  EXPECT_EQ(result, code::output_unopened);
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

TEST(CalFileLoad, GivesBackWhatWasSaved) {
  const temp_folder folder;
  const selen360_cal_file saved({wide_lens(1.2345678, -2, 3e-9), initial_model({64, 48, 170, 2})},
                                {{640, 480, 90.25f, 0}, {64, 48, 170, 2}});
  ASSERT_EQ(saved.save(folder.file("rig.cal")), code::success);
  selen360_cal_file back(1.0f);
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(back.load(folder.file("rig.cal").c_str()), 0); }), "");
  ASSERT_EQ(back.cam_count(), 2u);
  ASSERT_EQ(back.details().size(), 2u);
  EXPECT_EQ(back.cam_width(0), 640);
  EXPECT_EQ(back.cam_height(1), 48);
  EXPECT_EQ(back.cam_lens(1), 2);
  EXPECT_EQ(back.details()[0].hfov, 90.25f);
  int compared = 0;
  for (std::size_t camera = 0; camera < 2; ++camera) {
    ASSERT_EQ(back.models()[camera].size(), saved.models()[camera].size());
    for (const auto& [key, value] : saved.models()[camera]) {
      EXPECT_NEAR(back.models()[camera].at(key), value, 5e-6 * std::abs(value));
      ++compared;
    }
  }
  EXPECT_EQ(compared, 2 * 17);
}

TEST(CalFileLoad, LeavesNoTraceOfAnEarlierFile) {
  const temp_folder folder;
  write_file(folder.file("first"), "Width:1\nWidth:2\nC_0:1\nC_0:2\n");
  write_file(folder.file("second"), "Height:3\nC_1:4\n");
  selen360_cal_file file(1.0f);
  EXPECT_EQ(file.load(folder.file("first").c_str()), code::success);
  EXPECT_EQ(file.load(folder.file("second").c_str()), code::success);
  ASSERT_EQ(file.details().size(), 1u);
  EXPECT_EQ(file.details()[0].width, 0);
  EXPECT_EQ(file.details()[0].height, 3);
  EXPECT_EQ(file.models(), (std::vector<model_map>{{{C_1, 4.0}}}));
}

TEST(CalFileLoad, IsEmptyAfterAFileThatCantBeOpened) {
  const temp_folder folder;
  write_file(folder.file("rig.cal"), "Width:1\nC_0:1\n");
  selen360_cal_file file(1.0f);
  ASSERT_EQ(file.load(folder.file("rig.cal").c_str()), code::success);
  const std::string name = folder.file("missing.cal");
  int result = 0;
  EXPECT_EQ(printed_by([&] { result = file.load(name.c_str()); }), "Couldn't open: " + name + "\n");
  EXPECT_EQ(result, code::input_unusable);
  EXPECT_EQ(file.cam_count(), 0u);
  EXPECT_TRUE(file.details().empty());
}

#ifdef __linux__
TEST(CalFileLoad, TellsOfAFileThatCantBeRead) {
  // Opens, but nothing is mapped at its start: the first read fails.
  selen360_cal_file file(1.0f);
  int result = 0;
  EXPECT_EQ(printed_by([&] { result = file.load("/proc/self/mem"); }),
            "Couldn't read: /proc/self/mem\n");
  EXPECT_EQ(result, code::input_unusable);
}
#endif

TEST(CalFileLoad, CantOpenAFolder) {
  const temp_folder folder;
  const std::string name = folder.path().string();
  selen360_cal_file file(1.0f);
  int result = 0;
  EXPECT_EQ(printed_by([&] { result = file.load(name.c_str()); }), "Couldn't open: " + name + "\n");
  EXPECT_EQ(result, code::input_unusable);
}

TEST(CalFileLoad, AnEmptyFileIsNoCamera) {
  const loaded got("");
  EXPECT_EQ(got.result, code::success);
  EXPECT_EQ(got.file.cam_count(), 0u);
  EXPECT_TRUE(got.file.details().empty());
}

TEST(CalFileLoad, TakesLinesInAnyOrderAndAnyLineEnd) {
  const loaded got("C_0:1\r\nWidth:10 Lens:2\r\nC_0:2\n\tLens:1\v Width:20\r\n");
  EXPECT_EQ(got.result, code::success);
  ASSERT_EQ(got.file.cam_count(), 2u);
  ASSERT_EQ(got.file.details().size(), 2u);
  EXPECT_EQ(got.file.models()[1].at(C_0), 2);
  EXPECT_EQ(got.file.cam_width(0), 10);
  EXPECT_EQ(got.file.cam_lens(0), 2);
  EXPECT_EQ(got.file.cam_width(1), 20);
  EXPECT_EQ(got.file.cam_lens(1), 1);
}

TEST(CalFileLoad, StartsFromZerosAndKeepsWhatALineLeavesOut) {
  const loaded got("Width:10\nHeight:5\n");
  ASSERT_EQ(got.file.details().size(), 2u);
  EXPECT_EQ(got.file.details()[0].height, 0);
  EXPECT_EQ(got.file.details()[0].lens, 0);
  EXPECT_EQ(got.file.details()[0].hfov, 0.0f);
  EXPECT_EQ(got.file.details()[1].width, 10);
  EXPECT_EQ(got.file.details()[1].height, 5);
}

TEST(CalFileLoad, ABlankLineIsAFurtherDetailRecord) {
  const loaded got("Width:10\n \n\nWidth:20\n");
  ASSERT_EQ(got.file.details().size(), 4u);
  EXPECT_EQ(got.file.details()[1].width, 10);
  EXPECT_EQ(got.file.details()[2].width, 10);
  EXPECT_EQ(got.file.details()[3].width, 20);
}

TEST(CalFileLoad, DetailKeysOnAModelLineCarryOnWithoutARecord) {
  const loaded got("Width:10 C_0:1\nHeight:5\n");
  EXPECT_EQ(got.file.cam_count(), 1u);
  ASSERT_EQ(got.file.details().size(), 1u);
  EXPECT_EQ(got.file.details()[0].width, 10);
  EXPECT_EQ(got.file.details()[0].height, 5);
}

TEST(CalFileLoad, StopsAtALensOfThree) {
  const loaded got("Width:10\nC_0:1\nWidth:20 Lens:3x Height:4\nC_0:2\n");
  EXPECT_EQ(got.result, code::content_malformed);
  EXPECT_EQ(got.printed, "Lens expects 0, 1 or 2, got: '3', in value: 3x\n");
  EXPECT_EQ(got.file.details().size(), 1u);
  EXPECT_EQ(got.file.cam_count(), 1u);
}

TEST(CalFileLoad, StopsAtANegativeLens) {
  const loaded got("Lens:-1\nC_0:2\n");
  EXPECT_EQ(got.result, code::content_malformed);
  EXPECT_EQ(got.printed, "Lens expects 0, 1 or 2, got: '-1', in value: -1\n");
  EXPECT_EQ(got.file.cam_count(), 0u);
}

TEST(CalFileLoad, DropsTheRestOfALineBehindAnUnknownKey) {
  const loaded got("Width:10 Depth:3 Height:5\nHeight:7\nC_0:1 c_0:2 C_1:3\nL:1\n");
  EXPECT_EQ(got.result, code::content_malformed);
  EXPECT_EQ(got.printed, "parameter not recognised: Depth\nparameter not recognised: c_0\n");
  ASSERT_EQ(got.file.details().size(), 2u);
  EXPECT_EQ(got.file.details()[0].width, 10);
  EXPECT_EQ(got.file.details()[0].height, 0);
  EXPECT_EQ(got.file.details()[1].height, 7);
  EXPECT_EQ(got.file.models(), (std::vector<model_map>{{{C_0, 1.0}}, {{L, 1.0}}}));
}

TEST(CalFileLoad, KnowsKeysByTheirWholeLength) {
  EXPECT_EQ(loaded("C_00:1\n").printed, "parameter not recognised: C_00\n");
  EXPECT_EQ(loaded("C_:1\n").printed, "parameter not recognised: C_\n");
}

TEST(CalFileLoad, ATokenThatBeginsWithAColonHasAnEmptyKey) {
  const loaded got(":5\n");
  EXPECT_EQ(got.result, code::content_malformed);
  EXPECT_EQ(got.printed, "parameter not recognised: \n");
  EXPECT_EQ(got.file.details().size(), 1u);
}

TEST(CalFileLoad, ATokenWithoutAColonIsNoNumber) {
  const loaded got("Width:10 Lens:1 Width Lens C_0\n");
  EXPECT_EQ(got.result, code::success);
  EXPECT_EQ(got.printed, "");
  EXPECT_EQ(got.file.models(), (std::vector<model_map>{{{C_0, 0.0}}}));
  const loaded detail("Width:10 Lens:1\nWidth Lens\n");
  ASSERT_EQ(detail.file.details().size(), 2u);
  EXPECT_EQ(detail.file.details()[1].width, 0);
  EXPECT_EQ(detail.file.details()[1].lens, 0);
}

TEST(CalFileLoad, AnEmptyValueLeavesTheFieldAsItWas) {
  const loaded got("Width:10 Width: Hfov:2.5 Hfov: Lens:2 Lens:\nC_0: C_1:3 C_1:\n");
  EXPECT_EQ(got.result, code::success);
  ASSERT_EQ(got.file.details().size(), 1u);
  EXPECT_EQ(got.file.details()[0].width, 10);
  EXPECT_EQ(got.file.details()[0].hfov, 2.5f);
  EXPECT_EQ(got.file.details()[0].lens, 2);
  EXPECT_EQ(got.file.models(), (std::vector<model_map>{{{C_0, 0.0}, {C_1, 3.0}}}));
}

TEST(CalFileLoad, ReadsAsFarAsAValueIsANumber) {
  const loaded got("Width:12abc Hfov:1.5:2\nC_0:nan C_1:inf C_2:-2.5e1x A_th:x\n");
  EXPECT_EQ(got.result, code::success);
  EXPECT_EQ(got.file.details()[0].width, 12);
  EXPECT_EQ(got.file.details()[0].hfov, 1.5f);
  EXPECT_EQ(got.file.models(),
            (std::vector<model_map>{{{C_0, 0.0}, {C_1, 0.0}, {C_2, -25.0}, {A_th, 0.0}}}));
}

TEST(CalFileLoad, ReadsALastLineWithoutItsEnd) {
  const loaded got("Width:10\nC_0:1");
  EXPECT_EQ(got.file.cam_count(), 1u);
  EXPECT_EQ(got.file.details().size(), 1u);
}

TEST(CalFileAccessors, TruncateTheFieldOfView) {
  EXPECT_EQ(loaded("Hfov:179.9\nC_0:0\n").file.cam_hfov(0), 179);
  EXPECT_EQ(loaded("Hfov:-0.9\nC_0:0\n").file.cam_hfov(0), 0);
}

TEST(CalFileAccessors, HoldAFieldOfViewBeyondTheIntegersAtTheirEnd) {
  EXPECT_EQ(loaded("Hfov:1e20\nC_0:0\n").file.cam_hfov(0), std::numeric_limits<int>::max());
  EXPECT_EQ(loaded("Hfov:-1e20\nC_0:0\n").file.cam_hfov(0), std::numeric_limits<int>::min());
}

void expect_id_refused(const selen360_cal_file& file, std::uint64_t id) {
  const std::string shown = std::to_string(id) + "\n";
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(file.cam_width(id), -1); }),
            "selen360_cal_file::cam_width() invalid camera id: " + shown);
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(file.cam_height(id), -1); }),
            "selen360_cal_file::cam_height() invalid camera id: " + shown);
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(file.cam_lens(id), -1); }),
            "selen360_cal_file::cam_lens() invalid camera id: " + shown);
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(file.cam_hfov(id), -1); }),
            "selen360_cal_file::cam_hfov() invalid camera id: " + shown);
}

TEST(CalFileAccessors, RefuseAnIdAtTheNumberOfModels) {
  expect_id_refused(loaded("Width:1\nWidth:2\nC_0:0\n").file, 1);
}

TEST(CalFileAccessors, RefuseAnIdBeyondTheDetails) {
  expect_id_refused(loaded("Width:1\nC_0:0\nC_0:0\n").file, 1);
}

TEST(CalFileAccessors, RefuseTheLargestId) {
  expect_id_refused(loaded("Width:1\nC_0:0\n").file, std::numeric_limits<std::uint64_t>::max());
}

}  // namespace
}  // namespace ocpan
