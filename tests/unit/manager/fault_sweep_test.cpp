#include "support/fault_sweep.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/allocation_faults.h"

namespace tavira::test {
namespace {

std::int32_t GetStatus() {
  std::uint32_t status = 0;
  return TVMGR_GetPrinterStatus(&status);
}

void LoadEverything(CTestWorld&) {
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, 0));
}

/** A printer whose guard has to write on both sides. */
void LoadFromANonNeutralPrinter(CTestWorld& world) {
  world.printer.SetSetting("CLR,P", "300");
  LoadEverything(world);
  TVMGR_SetLoadList(6);
  TVMGR_SetLoadList(12);
}

void StoreFiles(CTestWorld& world) {
  world.printer.PutFile("E:KORVDEF.BGD", "background");
  world.printer.PutFile("E:LOGO.PNG", std::string(300, 'p'));
  world.printer.PutFile("E:LABEL.ZPL", "^FO0,0^FDlabel^FS");
}

std::string StoredFile() {
  std::uint32_t size = 0;
  TVMGR_GetStoredData(nullptr, &size);
  std::string bytes(size, '\0');
  TVMGR_GetStoredData(reinterpret_cast<std::uint8_t*>(bytes.data()), &size);
  return bytes;
}

void SetRequest(std::uint32_t kind, std::string_view primary) {
  TVMGR_UpdateRegistList(kind, reinterpret_cast<const std::uint8_t*>(primary.data()),
                         static_cast<std::uint32_t>(primary.size()), nullptr, 0);
}

std::int32_t Execute(std::uint32_t code) {
  const std::int32_t stored = TVMGR_SetExecuteList(code, reinterpret_cast<const std::uint8_t*>("data"), 4);
  return stored == TVMGR_OK ? TVMGR_ExecutePrinterOperation() : stored;
}

const std::vector<tagSweptOperation>& Operations() {
  // Made here: in the operations themselves they would be allocations of the test's own.
  static const WideString graphic_name = Wide("LOGO.PNG");
  static const WideString format_name = Wide("LABEL.ZPL");
  static const std::vector<tagSweptOperation> operations{
      {"load one", LoadFromANonNeutralPrinter, [] { return TVMGR_LoadSetting(false, 12); }},
      {"load by list",
       LoadFromANonNeutralPrinter,
       [] { return TVMGR_LoadSettingByList(true); },
       {TVMGR_OK},
       [](CTestWorld& world) {
         EXPECT_EQ(world.printer.Setting("CMP,F"), StoredValue(TVMGR_SETTING_CMP_F));
       }},
      {"load everything",
       [](CTestWorld& world) {
         StoreFiles(world);
         world.printer.SetSetting("CLR,Z", "300");
       },
       [] { return TVMGR_LoadSetting(true, 0); },
       {TVMGR_OK, TVMGR_PAYLOAD_UNREADABLE}},
      {"prefix change", LoadEverything, [] { return TVMGR_UpdatePrefix('~', '^', ','); }},
      {"prefix test", nullptr,
       [] {
         std::uint8_t is_default = 0;
         return TVMGR_IsDefaultPrefix(&is_default);
       }},
      {"status", nullptr, GetStatus},
      {"direct command", LoadFromANonNeutralPrinter,
       [] { return TVMGR_DirectSendCommand(reinterpret_cast<const std::uint8_t*>("~HS"), 3, true); }},
      {"update",
       [](CTestWorld& world) {
         StoreFiles(world);
         world.printer.SetSetting("CLR,P", "300");
         TVMGR_SetUpdateList(12, reinterpret_cast<const std::uint8_t*>("new"), 3);
       },
       [] { return TVMGR_UpdatePrinterSetting(); },
       {TVMGR_OK, TVMGR_PAYLOAD_UNREADABLE}},
      {"fetch",
       [](CTestWorld& world) {
         StoreFiles(world);
         EXPECT_EQ(TVMGR_OK, TVMGR_LoadStoredData(Wide("KORVDEF.BGD").c_str(), 0, 1000));
       },
       [] { return TVMGR_LoadStoredData(graphic_name.c_str(), 0, 1000); },
       {TVMGR_OK, TVMGR_PAYLOAD_UNREADABLE},
       [](CTestWorld& world) {
         if (world.call_failed) {
           EXPECT_EQ("background", StoredFile());
         }
       }},
      {"fetch a format", StoreFiles, [] { return TVMGR_LoadStoredData(format_name.c_str(), 1, 1000); }},
      {"delete",
       [](CTestWorld& world) {
         StoreFiles(world);
         SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, "LOGO.PNG");
       },
       [] { return TVMGR_DeleteData(); }},
      {"register",
       [](CTestWorld&) { SetRequest(TVMGR_REQUEST_REGISTER_FORMAT, "^XA^DFE:NEW.ZPL^FS^FDnew label^FS^XZ"); },
       [] { return TVMGR_RegistData(); }},
      {"register a graphic",
       [](CTestWorld&) { SetRequest(TVMGR_REQUEST_REGISTER_GRAPHIC, "~DYE:NEW,B,P,3,0,:B64:YWJj:"); },
       [] { return TVMGR_RegistData(); }},
      {"delete the background",
       [](CTestWorld& world) {
         StoreFiles(world);
         SetRequest(TVMGR_REQUEST_BACKGROUND, "KORVDEF.BGD");
       },
       [] { return TVMGR_DeleteData(); }},
      {"send data", LoadEverything, [] { return Execute(TVMGR_OP_SEND_DATA); }},
      {"head maintenance", nullptr, [] { return Execute(TVMGR_OP_HEAD_MAINTENANCE); }},
      {"factory reset", LoadEverything, [] { return Execute(TVMGR_OP_FACTORY_RESET); }},
      {"initialize memory", StoreFiles, [] { return Execute(TVMGR_OP_INITIALIZE_MEMORY); }},
  };
  return operations;
}

class FaultSweepTest : public ::testing::TestWithParam<std::size_t> {};

TEST_P(FaultSweepTest, EveryPortCall) {
  SweepPortCalls(Operations()[GetParam()]);
}

TEST_P(FaultSweepTest, EveryAllocation) {
  SweepAllocations(Operations()[GetParam()]);
}

INSTANTIATE_TEST_SUITE_P(Operation, FaultSweepTest, ::testing::Range<std::size_t>(0, Operations().size()),
                         [](const auto& parameter) {
                           std::string name = Operations()[parameter.param].name;
                           std::replace(name.begin(), name.end(), ' ', '_');
                           return name;
                         });

TEST(FaultSweepLifecycleTest, EveryAllocationOfInitialize) {
  bool reached = true;
  for (std::uint32_t nth = 1; reached; ++nth) {
    ASSERT_LT(nth, 1000U);
    CTestWorld world;
    CAllocationFaults::Arm(nth);
    const std::int32_t result = TVMGR_Initialize();
    reached = CAllocationFaults::Disarm();
    EXPECT_EQ(reached ? TVMGR_OUT_OF_MEMORY : TVMGR_OK, result) << nth;
    const std::int32_t later = TVMGR_LoadSetting(false, 1);  // whatever is in place answers, and says so
    EXPECT_TRUE(reached ? later == TVMGR_NOT_INITIALIZED : later == TVMGR_OK) << nth << ": " << later;
    TVMGR_Terminate();
  }
}

TEST(FaultSweepLifecycleTest, RecordsAndListsSurviveLackOfMemory) {
  CTestWorld world;
  TVMGR_Initialize();
  SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, "KEPT.PNG");
  const std::string long_value(100, 'x');
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(long_value.data());
  const WideString port = Wide("\\\\.\\a port name of some length");
  TvmgrFoundPrinter record{};
  record.text5 = port.c_str();
  TvmgrBackupInfo info{};
  info.path = port.c_str();
  const std::vector<std::function<std::int32_t()>> calls{
      [&] { return TVMGR_UpdatePortComInfo(&record, port.c_str()); },
      [] { return TVMGR_SetLoadList(1); },
      [&] { return TVMGR_SetUpdateList(1, bytes, 100); },
      [&] { return TVMGR_SetExecuteList(TVMGR_OP_SEND_DATA, bytes, 100); },
      [&] { return TVMGR_UpdateBackupInfo(&info); },
      [&] { return TVMGR_UpdateRegistList(1, bytes, 100, bytes, 100); },
  };
  for (const auto& call : calls) {
    bool reached = true;
    for (std::uint32_t nth = 1; reached; ++nth) {
      CAllocationFaults::Arm(nth);
      const std::int32_t result = call();
      reached = CAllocationFaults::Disarm();
      EXPECT_EQ(reached ? TVMGR_OUT_OF_MEMORY : TVMGR_OK, result);
    }
  }
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSettingByList(true));
  EXPECT_EQ((std::vector<std::string>{"~H(CLR,Z~H(CLR,P~H(CLR,R~H(CMP,U", "~H(IMP,S"}), world.Sent());
  TVMGR_Terminate();
}

}  // namespace
}  // namespace tavira::test
