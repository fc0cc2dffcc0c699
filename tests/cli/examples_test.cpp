#include <gmock/gmock.h>

#include "cli_fixture.h"

namespace {

using testing::HasSubstr;

class CExamplesTest : public CCliTest {};

TEST_F(CExamplesTest, WriteASettingAndReadSettings) {
  WriteIni("[printer]\nunanswered=CLR,P\n");
  const tagRun written = RunProgram(ProgramFolder() / "write_setting.exe", {"6", "12", "USB001"});
  EXPECT_EQ(written.exit_code, 0U) << written.err;
  EXPECT_EQ(written.out, "setting 6 is 12\r\n");
  EXPECT_THAT(Log(), HasSubstr("\"USB001\""));

  const tagRun read = RunProgram(ProgramFolder() / "read_settings.exe", {});
  EXPECT_EQ(read.exit_code, 1U);
  EXPECT_EQ(read.out,
            "first resolution: 600\r\nsecond resolution: not answered\r\nthird resolution: 600\r\n");

  const tagRun layer = RunProgram(ProgramFolder() / "printer_sample.exe", {"read", "USB001"});
  EXPECT_EQ(layer.exit_code, 0U) << layer.err;
  EXPECT_EQ(layer.out, "resolutions: 600, (not answered), 600\r\n");

  // A silent printer costs seconds, not the quarter of an hour of all waits.
  WriteIni("[faults]\nsilent=1\n");
  for (const auto& [program, arguments] :
       {std::pair<const char*, std::vector<std::string>>{"read_settings.exe", {}},
        {"write_setting.exe", {"6", "12"}}}) {
    const tagRun silent = RunProgram(ProgramFolder() / program, arguments);
    EXPECT_EQ(silent.exit_code, 1U);
    EXPECT_THAT(silent.err, HasSubstr("the printer does not answer"));
  }
}

}  // namespace
