#include <gmock/gmock.h>

#include "cli_fixture.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class CPrefixTest : public CCliTest {};

TEST_F(CPrefixTest, ChangedCharactersAreShownAndPutBackOnAPrinterThatNobodyCanRead) {
  EXPECT_EQ(Json({"prefix", "--set", "!", "0x40", ";", "--yes"}),
            json::parse(R"({"version":1,"command":"prefix","exit_code":0,"error":null,"default":false,
                "control":"!","format":"@","delimiter":";"})"));
  // From now on the printer understands nothing else, so the module cannot even ask for its status.
  WriteIni("[printer]\nstrict_prefix=1\n");
  const tagRun back = Tvmgr({"prefix", "--default", "--yes"});
  EXPECT_EQ(back.exit_code, 0U) << back.err;
  EXPECT_EQ(back.out,
            "default prefix characters\n"
            "  control    ~  (0x7E)\n"
            "  format     ^  (0x5E)\n"
            "  delimiter  ,  (0x2C)\n");
}

TEST_F(CPrefixTest, SilencePassesNotForDefaultCharacters) {
  WriteIni("[faults]\ncut_at=1\n");
  const tagRun run = Tvmgr({"prefix"});
  EXPECT_EQ(run.exit_code, 4U);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("did not answer"));
}

}  // namespace
