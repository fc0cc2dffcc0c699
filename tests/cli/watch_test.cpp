#include <gmock/gmock.h>
#include <windows.h>

#include <chrono>
#include <thread>

#include "cli_fixture.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class CWatchTest : public CCliTest {
 protected:
  // A folder with the tool and a port library that does what this says once a send reaches it.
  std::filesystem::path WithBrokenPortLibrary(const wchar_t* behaviour) const {
    namespace fs = std::filesystem;
    const fs::path folder = folder_ / "broken";
    fs::create_directories(folder);
    for (const char* const file : {"tvmgr.exe", "TaviraManager.dll"}) {
      fs::copy_file(ProgramFolder() / file, folder / file, fs::copy_options::overwrite_existing);
    }
    fs::copy_file(ProgramFolder() / "broken" / "Ferrolink.dll", folder / "Ferrolink.dll",
                  fs::copy_options::overwrite_existing);
    SetEnvironmentVariableW(L"BROKEN_PORT", behaviour);
    return folder / "tvmgr.exe";
  }
};

std::uint64_t Seconds(std::uint64_t since) {
  return (GetTickCount64() - since) / 1000;
}

TEST_F(CWatchTest, WorkWithAPrinterThatFallsSilentIsEndedWhenTheTimeIsOver) {
  WriteIni("[faults]\nsilent=1\n");
  const std::uint64_t start = GetTickCount64();
  tagRun next;
  std::thread waiting([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(1000));
    next = Tvmgr({"get", "CLM,S"});
  });
  const tagRun run = Tvmgr({"set", "CLM,S=3", "--no-check", "--timeout", "1"});
  EXPECT_EQ(run.exit_code, 4U);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("TEST" + std::to_string(GetCurrentProcessId()) + " no longer answers"));
  EXPECT_THAT(run.err, HasSubstr("while writing and verifying"));
  EXPECT_THAT(run.err, HasSubstr("What of it the printer has taken is not known"));
  EXPECT_LT(Seconds(start), 30U);
  waiting.join();
  EXPECT_THAT(next.err, HasSubstr("was ended in the middle; its resolutions"));
}

TEST_F(CWatchTest, WorkGoesOnWhileThePrinterAnswersAndEndsAsIfNobodyWatched) {
  // Each answer takes longer than the time-out.
  WriteIni("[faults]\nlatency_ms=300\n");
  const tagRun run = Tvmgr({"get", "CLR,Z", "--timeout", "0.2"});
  EXPECT_EQ(run.exit_code, 0U) << run.err;
  EXPECT_THAT(run.out, HasSubstr("600"));
  EXPECT_EQ(Tvmgr({"send", "-"}, "bytes").exit_code, 0U);  // stdin reaches the worker
  EXPECT_THAT(Log(), HasSubstr("bytes^XA^H(E^XZ"));
}

TEST_F(CWatchTest, PortLibraryThatHangsOrCrashesDoesNotTakeTheToolWithIt) {
  std::uint64_t start = GetTickCount64();
  const tagRun hangs = RunProgram(WithBrokenPortLibrary(L"hang"), {"status"});
  EXPECT_EQ(hangs.exit_code, 4U);
  EXPECT_THAT(hangs.err, HasSubstr("Ferrolink.dll does not return from a call"));
  EXPECT_LT(Seconds(start), 40U);
  const tagRun crashes = RunProgram(WithBrokenPortLibrary(L"crash"), {"status"});
  EXPECT_EQ(crashes.exit_code, 1U);
  EXPECT_THAT(crashes.err, HasSubstr("while asking for the printer's status"));
  EXPECT_THAT(crashes.err, HasSubstr("the exception 0xC"));
}

TEST_F(CWatchTest, CommandsAtOnceOnOnePrinterTakeTurns) {
  // One that takes long, and the others while it is at work.
  WriteIni("[printer]\nmaintenance_ms=4000\n");
  tagRun first;
  const std::jthread long_work([&] { first = Tvmgr({"op", "media-calibration"}); });
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  const std::vector<tagRun> runs = TvmgrEach({{"set", "CLM,S=3"}, {"set", "CLM,T=2"}, {"status"}});
  for (const tagRun& run : runs) {
    EXPECT_EQ(run.exit_code, 0U) << run.out << run.err;
  }
  EXPECT_THAT(runs[0].err + runs[1].err,
              HasSubstr("waiting for another tvmgr that works with the printer TEST"));
  EXPECT_THAT(runs[2].err, Not(HasSubstr("waiting for another")));
}

}  // namespace
