#include <gmock/gmock.h>

#include "cli_fixture.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class CPatternsTest : public CCliTest {};

TEST_F(CPatternsTest, GroupsAndPatternsNameSettings) {
  const std::vector<tagRun> runs =
      TvmgrEach({{"get", "CLR", "CL?_P", "3"}, {"get", "XYZ,*"}, {"get", "XYZ"}, {"get", "S*", "--json"}});
  EXPECT_EQ(runs[0].out,
            "ID  KEY    VALUE\n3   CLR,Z  600\n4   CLR,P  600\n5   CLR,R  600\n6   CLM,P  0\n14  CLS,P  0\n");
  EXPECT_EQ(runs[1].exit_code, 2U);
  EXPECT_THAT(runs[1].err, HasSubstr("no setting matches \"XYZ,*\""));
  EXPECT_THAT(runs[2].err, HasSubstr("no setting and no group \"XYZ\""));
  EXPECT_EQ(runs[3].exit_code, 0U) << "ST has no value to be missing";
}

TEST_F(CPatternsTest, PatternsFetchAndRemoveWhatTheListsHold) {
  WriteIni("[faults]\nlatency_ms=0\n");
  for (const char* const name : {"A.PNG", "B.PNG", "C.ZPL"}) {
    StoreOnE(name, "^FDx^FS");
  }
  const std::string folder = Utf8Path("stored");
  const tagRun fetched = Tvmgr({"fetch", "e:*", "-o", folder, "--json"});
  EXPECT_EQ(fetched.exit_code, 0U) << fetched.err;
  const json files = json::parse(fetched.out)["files"];
  ASSERT_EQ(files.size(), 3U);
  EXPECT_EQ(files[0],
            json({{"name", "A.PNG"}, {"bytes", 7}, {"file", folder + "\\A.PNG"}, {"reason", nullptr}}));
  EXPECT_EQ(ReadFileBytes(HostPath("stored/C.ZPL")), "^XA^DFE:C.ZPL^FS^FDx^FS^XZ");
  const std::vector<tagRun> refused = TvmgrEach({{"fetch", "A*", "-o", folder},
                                                 {"fetch", "A*"},
                                                 {"fetch", "R:*", "-o", folder},
                                                 {"fetch", "X*", "-o", folder},
                                                 {"rm", "X*", "--yes"},
                                                 {"rm", "*.PNG"}});
  const struct {
    unsigned exit_code;
    const char* why;
  } why[] = {{2, "this will overwrite in the folder"},
             {2, "name a folder"},
             {2, "device E: only"},
             {1, "no stored file matches \"X*\""},
             {1, "no stored file matches \"X*\""},
             {2, "this will delete A.PNG, B.PNG on the printer"}};
  for (std::size_t i = 0; i < refused.size(); ++i) {
    EXPECT_EQ(refused[i].exit_code, why[i].exit_code) << i;
    EXPECT_THAT(refused[i].err, HasSubstr(why[i].why));
  }
  const tagRun dry = Tvmgr({"rm", "?.PNG", "E:NONE.PNG", "--dry-run", "--json"});
  EXPECT_EQ(dry.exit_code, 1U) << "one is not there";
  EXPECT_EQ(json::parse(dry.out)["files"][0]["reason"], "would be removed");
  EXPECT_EQ(StoredOnE("A.PNG"), "^FDx^FS");
  const tagRun removed = Tvmgr({"rm", "?.PNG", "a.png", "--yes"});
  EXPECT_EQ(removed.exit_code, 0U) << removed.err;
  EXPECT_EQ(removed.out, "NAME   REMOVED  REASON\nA.PNG  yes\nB.PNG  yes\n");
  EXPECT_EQ(StoredOnE("A.PNG"), "");
  EXPECT_EQ(StoredOnE("C.ZPL"), "^FDx^FS");
}

}  // namespace
