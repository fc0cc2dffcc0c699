#include "support/allocation_faults.h"
#include "support/module_test.h"

namespace tavira::test {
namespace {

std::u16string Utf16(TvmgrText text) {
  std::u16string result;
  for (std::size_t i = 0; i < TvmgrTextLength(text); ++i) {
    result.push_back(static_cast<char16_t>(text[i]));
  }
  return result;
}

/** A record that the module writes, released at the end. */
struct tagReport : TvmgrFoundPrinter {
  tagReport() : TvmgrFoundPrinter{} { result = TVMGR_GetPrinterDeviceInfo(this); }
  ~tagReport() { TvmgrFoundPrinterRelease(this); }
  std::int32_t result;
};

class PortSelectionTest : public ::testing::Test {
 protected:
  void SetUp() override { TVMGR_Initialize(); }
  void TearDown() override { TVMGR_Terminate(); }

  void Exchange() {
    std::uint32_t status = 0;
    EXPECT_EQ(TVMGR_OK, TVMGR_GetPrinterStatus(&status));
  }

  CTestWorld world_;
};

TEST_F(PortSelectionTest, ARecordReachesThePortLibraryAndIsReadBack) {
  const WideString path = Wide("\\\\?\\usb#1");
  const WideString address = Wide("192.0.2.7");
  for (const bool network : {false, true}) {
    TvmgrFoundPrinter record{};
    record.kind = network ? TVMGR_SEARCH_NETWORK : TVMGR_SEARCH_USB;
    record.text3 = network ? nullptr : path.c_str();
    record.text5 = network ? address.c_str() : nullptr;
    EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePortComInfo(&record, Wide("PORT").c_str()));
    Exchange();
    EXPECT_EQ(network ? 2 : 1, world_.port.LastPortType());
    EXPECT_EQ(u"PORT", world_.port.LastString(1));
    EXPECT_EQ(network ? u"" : u"\\\\?\\usb#1", world_.port.LastString(2));
    EXPECT_EQ(network ? u"192.0.2.7" : u"", world_.port.LastString(3));
    EXPECT_EQ("^FX^FS", world_.port.LastData().substr(0, 6));

    const tagReport report;
    EXPECT_EQ(TVMGR_OK, report.result);
    EXPECT_EQ(network ? 1 : 0, report.kind);
    EXPECT_EQ(u"PORT", Utf16(report.text1));
    EXPECT_EQ(network ? u"" : u"\\\\?\\usb#1", Utf16(report.text3));
    EXPECT_EQ(network ? u"192.0.2.7" : u"", Utf16(report.text5));
    EXPECT_EQ(u"", Utf16(report.text2) + Utf16(report.text4));
  }
}

TEST_F(PortSelectionTest, APortNameAloneIsPassedOn) {
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePortComInfo(nullptr, Wide("LPT1:").c_str()));
  Exchange();
  EXPECT_EQ(1, world_.port.LastPortType());
  EXPECT_EQ(u"LPT1:", world_.port.LastString(1));
}

TEST_F(PortSelectionTest, AnEmptySelectionReplacesTheEarlierOneWhole) {
  TvmgrFoundPrinter record{};
  const WideString address = Wide("192.0.2.7");
  record.text5 = address.c_str();
  TVMGR_UpdatePortComInfo(&record, Wide("PORT").c_str());
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePortComInfo(nullptr, nullptr));
  Exchange();
  EXPECT_EQ(1, world_.port.LastPortType());
  EXPECT_EQ(u"", world_.port.LastString(1) + world_.port.LastString(3));
  EXPECT_EQ(u"", Utf16(tagReport().text1));
}

TEST_F(PortSelectionTest, AChoiceWithoutMemoryLeavesNoEarlierPrinterButItsOwnName) {
  const WideString earlier = Wide("192.0.2.7");
  const WideString address = Wide("198.51.100.200");
  const WideString port = Wide("A_PORT_OF_ITS_OWN");
  TvmgrFoundPrinter record{};
  int names_kept = 0;
  std::int32_t result = TVMGR_OUT_OF_MEMORY;
  for (std::uint32_t nth = 1; result == TVMGR_OUT_OF_MEMORY; ++nth) {
    record.text5 = earlier.c_str();
    ASSERT_EQ(TVMGR_OK, TVMGR_UpdatePortComInfo(&record, Wide("EARLIER").c_str()));
    record.text5 = address.c_str();
    CAllocationFaults::Arm(nth);
    result = TVMGR_UpdatePortComInfo(&record, port.c_str());
    CAllocationFaults::Disarm();
    const tagReport report;
    const bool name_is_kept = Utf16(report.text1) == u"A_PORT_OF_ITS_OWN";
    EXPECT_EQ(result == TVMGR_OK ? u"198.51.100.200" : u"", Utf16(report.text5)) << nth;
    EXPECT_TRUE(name_is_kept || Utf16(report.text1).empty()) << nth;
    names_kept += name_is_kept ? 1 : 0;
  }
  EXPECT_EQ(TVMGR_OK, result);
  EXPECT_LE(3, names_kept);  // the description, its texts; and the choice that was made
}

TEST_F(PortSelectionTest, WithoutASelectionTheLibraryGetsEmptyStrings) {
  Exchange();
  EXPECT_EQ(1, world_.port.LastPortType());
  EXPECT_EQ(u"", world_.port.LastString(1) + world_.port.LastString(2) + world_.port.LastString(3));
  const tagReport report;
  EXPECT_EQ(TVMGR_OK, report.result);
  EXPECT_EQ(0, report.kind);
  EXPECT_EQ(TVMGR_NOT_INITIALIZED, TVMGR_GetPrinterDeviceInfo(nullptr));
}

TEST_F(PortSelectionTest, AReportReplacesTheTextsOfAnEarlierOne) {
  TVMGR_UpdatePortComInfo(nullptr, Wide("FIRST").c_str());
  TvmgrFoundPrinter record{};
  EXPECT_EQ(TVMGR_OK, TVMGR_GetPrinterDeviceInfo(&record));
  record.value1 = 7;
  TVMGR_UpdatePortComInfo(nullptr, Wide("SECOND").c_str());
  EXPECT_EQ(TVMGR_OK, TVMGR_GetPrinterDeviceInfo(&record));
  EXPECT_EQ(u"SECOND", Utf16(record.text1));
  EXPECT_EQ(0, record.value1);
  TvmgrFoundPrinterRelease(&record);
  EXPECT_EQ(nullptr, record.text1);
}

}  // namespace
}  // namespace tavira::test
