#include <future>
#include <thread>

#include "support/allocation_faults.h"
#include "support/module_test.h"
#include "unit/discovery/network/memory_network.h"

namespace tavira::test {
namespace {

struct tagForwarder {
  const char* name;
  std::function<std::int32_t()> call;
  bool needs_link = false; /**< answers -2 when the manager has no port link */
};

/** Every export but Initialize and Terminate, called with harmless arguments. */
const std::vector<tagForwarder>& Forwarders() {
  static const std::vector<tagForwarder> forwarders{
      {"LoadSetting", [] { return TVMGR_LoadSetting(false, 1); }, true},
      {"UpdateBackupInfo", [] { return TVMGR_UpdateBackupInfo(nullptr); }},
      {"ClearLoadList", [] { return TVMGR_ClearLoadList(); }},
      {"ClearUpdateList", [] { return TVMGR_ClearUpdateList(); }},
      {"SetLoadList", [] { return TVMGR_SetLoadList(1); }},
      {"SetUpdateList", [] { return TVMGR_SetUpdateList(1, nullptr, 0); }},
      {"UpdatePrinterSetting", [] { return TVMGR_UpdatePrinterSetting(); }, true},
      {"UpdatePrinterSettingNoChangeDPI", [] { return TVMGR_UpdatePrinterSettingNoChangeDPI(); }, true},
      {"SetExecuteList", [] { return TVMGR_SetExecuteList(TVMGR_OP_NONE, nullptr, 0); }},
      {"ExecutePrinterOperation", [] { return TVMGR_ExecutePrinterOperation(); }, true},
      {"ClearRegistList", [] { return TVMGR_ClearRegistList(); }},
      {"UpdateRegistList", [] { return TVMGR_UpdateRegistList(0, nullptr, 0, nullptr, 0); }},
      {"RegistData", [] { return TVMGR_RegistData(); }, true},
      {"DeleteData", [] { return TVMGR_DeleteData(); }, true},
      {"SearchPort", [] { return TVMGR_SearchPort(nullptr, nullptr, 0); }},
      {"StartSearchPrinter", [] { return TVMGR_StartSearchPrinter(7, 0); }},
      {"StopSearchPrinter", [] { return TVMGR_StopSearchPrinter(7); }},
      {"GetSearchPrinterStatus", [] { return TVMGR_GetSearchPrinterStatus(); }},
      {"CheckPort", [] { return TVMGR_CheckPort(0); }},
      {"SetCallbackWnd", [] { return TVMGR_SetCallbackWnd(nullptr); }},
      {"SendPrnFile", [] { return TVMGR_SendPrnFile(nullptr); }},
      {"GetDeviceInfo", [] { return TVMGR_GetDeviceInfo(nullptr, nullptr, 0, 0); }},
      {"Backup", [] { return TVMGR_Backup(0); }, true},
      {"Restore", [] { return TVMGR_Restore(nullptr); }, true},
      {"GetSearchedPrinterInfo", [] { return TVMGR_GetSearchedPrinterInfo(7, 0, nullptr, nullptr); }},
      {"GetRegistFileArraySize", [] { return TVMGR_GetRegistFileArraySize(0, nullptr); }},
      {"GetRegistFileArrayData", [] { return TVMGR_GetRegistFileArrayData(0, 0, nullptr, nullptr); }},
      {"LoadStoredData", [] { return TVMGR_LoadStoredData(nullptr, 0, 0); }, true},
      {"GetStoredData", [] { return TVMGR_GetStoredData(nullptr, nullptr); }},
      {"UpdatePrefix", [] { return TVMGR_UpdatePrefix('~', '^', ','); }, true},
      {"IsDefaultPrefix", [] { return TVMGR_IsDefaultPrefix(nullptr); }, true},
      {"GetPrinterStatus", [] { return TVMGR_GetPrinterStatus(nullptr); }, true},
      {"DirectSendCommand", [] { return TVMGR_DirectSendCommand(nullptr, 0, false); }, true},
      {"LoadSettingByList", [] { return TVMGR_LoadSettingByList(false); }, true},
      {"UpdatePortComInfo", [] { return TVMGR_UpdatePortComInfo(nullptr, nullptr); }, true},
      {"GetPrinterDeviceInfo", [] { return TVMGR_GetPrinterDeviceInfo(nullptr); }, true},
  };
  return forwarders;
}

void ExpectNoManager() {
  for (const auto& [name, call, needs_link] : Forwarders()) {
    EXPECT_EQ(TVMGR_NOT_INITIALIZED, call()) << name;
  }
  std::int32_t length = 5;
  EXPECT_FALSE(TVMGR_GetSettingValue(1, nullptr, &length));
  EXPECT_EQ(5, length);
}

TEST(LifecycleTest, EveryExportIsHarmlessWithoutAManager) {
  CTestWorld world;
  EXPECT_EQ(TVMGR_OK, TVMGR_Terminate());
  ExpectNoManager();
  EXPECT_EQ(TVMGR_OK, TVMGR_Initialize());
  EXPECT_EQ(TVMGR_OK, TVMGR_ClearLoadList());
  EXPECT_EQ(TVMGR_OK, TVMGR_Terminate());
  EXPECT_EQ(TVMGR_OK, TVMGR_Terminate());
  ExpectNoManager();
}

TEST(LifecycleTest, WithoutAPortLinkWhatNeedsOneSaysSo) {
  CTestWorld world;
  for (std::uint32_t nth = 1; TVMGR_ClearLoadList() != TVMGR_OK; ++nth) {  // until a manager stays
    ASSERT_GT(1000U, nth);
    CAllocationFaults::Arm(nth);
    EXPECT_EQ(TVMGR_OUT_OF_MEMORY, TVMGR_Initialize()) << nth;
    CAllocationFaults::Disarm();
  }
  EXPECT_EQ(TVMGR_NOT_INITIALIZED, TVMGR_LoadSetting(true, 0));
  for (const auto& [name, call, needs_link] : Forwarders()) {
    EXPECT_EQ(needs_link, call() == TVMGR_NOT_INITIALIZED) << name;
  }
  EXPECT_TRUE(world.calls.empty());
  TVMGR_Terminate();
  std::int32_t result = TVMGR_OUT_OF_MEMORY;
  for (std::uint32_t nth = 1; result != TVMGR_OK;
       ++nth) {  // wherever the memory ends, in the link itself too
    CAllocationFaults::Arm(nth);
    result = TVMGR_Initialize();
    CAllocationFaults::Disarm();
    EXPECT_EQ(result == TVMGR_OK ? TVMGR_OK : TVMGR_NOT_INITIALIZED, TVMGR_LoadSetting(false, 1)) << nth;
    TVMGR_Terminate();
  }
}

// In a process of its own, because the earlier manager is never released.
TEST(LifecycleTest, ASecondInitializeThatFailsLeavesNoManager) {
  const auto initialize_twice = [] {
    CTestWorld world;
    const bool first = TVMGR_Initialize() == TVMGR_OK;
    CAllocationFaults::Arm(1);
    const bool second = TVMGR_Initialize() == TVMGR_OUT_OF_MEMORY;
    CAllocationFaults::Disarm();
    std::_Exit(first && second && TVMGR_ClearLoadList() == TVMGR_NOT_INITIALIZED ? 0 : 1);
  };
  EXPECT_EXIT(initialize_twice(), ::testing::ExitedWithCode(0), "");
}

TEST(LifecycleTest, WhatCannotBeSentIsRefusedBeforeThePortIsOpened) {
  static constexpr std::uint8_t kByte = '~';
  static constexpr TvmgrChar kEmpty[] = {0};
  static constexpr TvmgrChar kBeyondTheCodePage[] = {'A', 0xFF3E, '.', 'P', 'N', 'G', 0};
  const std::function<std::int32_t()> calls[] = {
      [] { return TVMGR_DirectSendCommand(nullptr, 5, true); },
      [] { return TVMGR_DirectSendCommand(&kByte, 0, true); },
      [] { return TVMGR_DirectSendCommand(&kByte, -1, false); },
      [] { return TVMGR_DirectSendCommand(&kByte, INT32_MIN, false); },
      [] { return TVMGR_GetPrinterStatus(nullptr); },
      [] { return TVMGR_LoadStoredData(nullptr, 0, 1000); },
      [] { return TVMGR_LoadStoredData(nullptr, 1, 1000); },
      [] { return TVMGR_LoadStoredData(kEmpty, 0, 1000); },
      [] { return TVMGR_LoadStoredData(kEmpty, 1, 1000); },
      [] { return TVMGR_LoadStoredData(kBeyondTheCodePage, 0, 1000); },
      [] { return TVMGR_LoadStoredData(kBeyondTheCodePage, 1, 1000); },
      [] {
        TVMGR_UpdateRegistList(TVMGR_REQUEST_DELETE_GRAPHIC, &kByte, 1, &kByte, 1);
        TVMGR_UpdateRegistList(TVMGR_REQUEST_DELETE_GRAPHIC, nullptr, 5, nullptr, 5);
        return TVMGR_DeleteData();
      },
  };
  CTestWorld world;
  TVMGR_Initialize();
  for (const auto& call : calls) {
    EXPECT_EQ(TVMGR_BAD_ARGUMENT, call()) << &call - calls;
  }
  EXPECT_TRUE(world.calls.empty());
  TVMGR_Terminate();
}

TEST(LifecycleTest, FixedAnswersAreFixed) {
  CTestWorld world;
  TVMGR_Initialize();
  int anything = 0;
  EXPECT_EQ(-103, TVMGR_CheckPort(0));
  EXPECT_EQ(-103, TVMGR_CheckPort(1));
  EXPECT_EQ(-7, TVMGR_SearchPort(&anything, nullptr, 9));
  EXPECT_EQ(0, TVMGR_SendPrnFile(&anything));
  EXPECT_EQ(0, TVMGR_GetDeviceInfo(&anything, &anything, 1, 2));
  EXPECT_EQ(0, TVMGR_SetCallbackWnd(reinterpret_cast<HWND__*>(&anything)));
  EXPECT_EQ(0, TVMGR_SetCallbackWnd(nullptr));
  TVMGR_Terminate();
  EXPECT_EQ((std::vector<EPortCall>{EPortCall::kTerminate}), world.calls);  // the port library is ended, once
}

TEST(LifecycleTest, EntryPointsAreLookedUpInOrderUpToTheFirstMissingOne) {
  const std::vector<std::string> names{"Initialize",  "Terminate",        "SendData",
                                       "ReceiveData", "ClearReceiveData", "GetPortComIndex"};
  for (std::size_t missing = 0; missing <= names.size(); ++missing) {
    CTestWorld world;
    const bool complete = missing == names.size();
    if (!complete) {
      world.missing_symbols.insert(names[missing]);
    }
    EXPECT_EQ(complete ? TVMGR_OK : TVMGR_PORT_LIBRARY_MISSING, TVMGR_Initialize());
    EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                                          missing + 1, names.size()))),
              world.symbol_lookups);
    EXPECT_EQ(complete ? TVMGR_OK : TVMGR_PORT_NOT_READY, TVMGR_LoadSetting(false, 1)) << missing;
    std::uint32_t status = 9;
    EXPECT_EQ(complete ? TVMGR_OK : TVMGR_PORT_NOT_READY, TVMGR_GetPrinterStatus(&status)) << missing;
    TVMGR_Terminate();
    if (!complete) {
      EXPECT_TRUE(world.calls.empty());  // an incomplete library is never called, not even to terminate
    }
  }
}

TEST(LifecycleTest, AMissingLibraryLeavesAManagerThatReportsItself) {
  CTestWorld world;
  world.library_is_missing = true;
  EXPECT_EQ(TVMGR_PORT_LIBRARY_MISSING, TVMGR_Initialize());
  EXPECT_EQ(TVMGR_OK, TVMGR_SetLoadList(1));
  EXPECT_EQ(TVMGR_PORT_NOT_READY, TVMGR_LoadSettingByList(false));
  TVMGR_Terminate();
}

TEST(LifecycleTest, TerminateWaitsForACallOfAnotherThread) {
  CTestWorld world;
  TVMGR_Initialize();
  std::promise<void> inside;
  std::promise<void> go_on;
  world.before_send = [&] {
    inside.set_value();
    go_on.get_future().wait();
  };
  std::uint32_t status = 9;
  auto call = std::async(std::launch::async, [&] { return TVMGR_GetPrinterStatus(&status); });
  inside.get_future().wait();
  auto end = std::async(std::launch::async, [] { return TVMGR_Terminate(); });
  EXPECT_EQ(std::future_status::timeout, end.wait_for(std::chrono::milliseconds(50)));
  EXPECT_EQ(TVMGR_NOT_INITIALIZED, TVMGR_ClearLoadList());
  go_on.set_value();
  EXPECT_EQ(TVMGR_OK, call.get());
  EXPECT_EQ(TVMGR_OK, end.get());
}

TEST(LifecycleTest, TerminateBesideTheSearchOfAnotherThread) {
  lxemu::tagSearchPlan silent;
  silent.silent.Add(lxemu::SearchMessage::kState);
  for (int round = 0; round < 20; ++round) {
    CTestWorld world;
    CMemoryNetwork printers(world.clock, std::vector(5, silent));
    world.sockets = &printers;
    TVMGR_Initialize();
    ASSERT_EQ(TVMGR_OK, TVMGR_StartSearchPrinter(TVMGR_SEARCH_NETWORK, 0));
    auto stops = std::async(std::launch::async, [] {
      std::int32_t result = TVMGR_OK;
      while (result == TVMGR_OK) {
        result = TVMGR_StopSearchPrinter(TVMGR_SEARCH_NETWORK);
        TVMGR_GetSearchedPrinterInfo(TVMGR_SEARCH_NETWORK, 0, nullptr, nullptr);
      }
      return result;
    });
    while (printers.Requests() < 5) {
      std::this_thread::yield();
    }
    EXPECT_EQ(TVMGR_OK, TVMGR_Terminate());
    EXPECT_EQ(TVMGR_NOT_INITIALIZED, stops.get());
    EXPECT_EQ(0U, printers.OpenSockets());
  }
}

}  // namespace
}  // namespace tavira::test
