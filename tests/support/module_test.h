#pragma once

#include <gtest/gtest.h>

#include "tavira/TaviraManager.h"
#include "test_world.h"

namespace tavira::test {

/** A module that is initialised and has a USB printer chosen, with a neutral emulated printer behind it. */
class CModuleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(TVMGR_OK, TVMGR_Initialize());
    SelectUsb();
    world_.ClearLog();
  }
  void TearDown() override { TVMGR_Terminate(); }

  static void SelectUsb() {
    const WideString path = Wide("\\\\?\\usb#lx");
    TvmgrFoundPrinter record{};
    record.text3 = path.c_str();
    TVMGR_UpdatePortComInfo(&record, Wide("USB001").c_str());
  }

  static void SelectNetwork() {
    const WideString address = Wide("127.0.0.1");
    TvmgrFoundPrinter record{};
    record.kind = TVMGR_SEARCH_NETWORK;
    record.text5 = address.c_str();
    TVMGR_UpdatePortComInfo(&record, nullptr);
  }

  /** Loads all settings and forgets the exchanges of that. */
  void LoadAll() {
    ASSERT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, 0));
    world_.ClearLog();
  }

  CTestWorld world_;
};

}  // namespace tavira::test
