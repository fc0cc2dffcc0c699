// Searches, with a module that finds what the test says: nothing is sent to any network.
#include <gmock/gmock.h>
#include <windows.h>

#include <chrono>
#include <thread>

#include "cli_fixture.h"
#include "test_console.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;

class CSearchTest : public CCliTest {
 protected:
  void SetUp() override {
    namespace fs = std::filesystem;
    CCliTest::SetUp();
    fs::copy_file(ProgramFolder() / "tvmgr.exe", folder_ / "tvmgr.exe");
    fs::copy_file(ProgramFolder() / "scripted" / "TaviraManager.dll", folder_ / "TaviraManager.dll");
  }

  tagRun Scripted(const wchar_t* script, const std::vector<std::string>& arguments,
                  const tagConsoleEnds& console = {}) const {
    SetEnvironmentVariableW(L"SCRIPTED_MANAGER", script);
    return RunProgram(folder_ / "tvmgr.exe", arguments, {}, console);
  }
};

TEST_F(CSearchTest, AllKeepsWhatOneHalfFoundWhenTheOtherFails) {
  const tagRun run = Scripted(L"no_network", {"search", "all", "--json"});
  EXPECT_EQ(run.exit_code, 3U);
  EXPECT_THAT(run.err, AllOf(HasSubstr("one half of the search failed: "), HasSubstr("-9: ")));
  const json document = json::parse(run.out);
  ASSERT_EQ(document["printers"].size(), 1U);
  EXPECT_EQ(document["printers"][0]["value"], "usb#1");
  EXPECT_THAT(Tvmgr({"use", "1", "--no-check"}).out, HasSubstr("device usb#1"));
  EXPECT_EQ(Scripted(L"no_network", {"search", "network"}).exit_code, 1U);
}

TEST_F(CSearchTest, BoundIsTheModulesAndLateNamesAreTold) {
  const tagRun run = Scripted(L"late", {"search", "network"});
  EXPECT_EQ(run.exit_code, 0U);
  EXPECT_THAT(run.out, HasSubstr("192.0.2.7"));
  EXPECT_THAT(run.err, AllOf(HasSubstr("(usually 3 s; at most 39 s)"),
                             HasSubstr("announced itself answered late, or not at all")));
}

TEST_F(CSearchTest, CtrlCEndsItAtOnceWithWhatWasFound) {
  const CTestConsole console;
  const struct {
    const wchar_t* script;
    std::size_t printers;
  } cases[] = {{L"", 1}, {L"silent", 0}};
  for (const auto& search : cases) {
    const std::uint64_t start = GetTickCount64();
    const std::jthread presses([] {
      std::this_thread::sleep_for(std::chrono::milliseconds(2500));
      CTestConsole::PressCtrlC();
    });
    const tagRun run = Scripted(search.script, {"search", "network", "--json"}, {console.Input()});
    EXPECT_EQ(run.exit_code, 3U) << run.err;
    EXPECT_THAT(run.err, HasSubstr("ended by Ctrl-C: there may be more printers"));
    EXPECT_EQ(json::parse(run.out)["printers"].size(), search.printers);
    EXPECT_LT(GetTickCount64() - start, 10'000U) << "the module takes 12 s to end, and 36 s for names";
  }
}

TEST_F(CSearchTest, OperationOfAPrinterThatIsStillBusyIsNotDone) {
  const tagRun run = Scripted(L"busy", {"op", "head-check"});
  EXPECT_EQ(run.exit_code, 3U);
  EXPECT_THAT(run.err, HasSubstr("head-check: sent; the printer is still busy"));
}

}  // namespace
