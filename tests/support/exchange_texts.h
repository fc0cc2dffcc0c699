#pragma once

#include <string>
#include <vector>

#include "command/command_builder.h"
#include "module_test.h"

namespace tavira::test {

/** The command bytes of a run of transactions, as CTestWorld::Sent reports them. */
using Transactions = std::vector<std::string>;

// One copy for each file: in which order inline ones are made is not the same with every compiler.
const std::string kClosing = "^XA^H(E^XZ";
inline constexpr char kSaving[] = "^XA^JUS^XZ^XA^H(E^XZ";
const std::string kCapture = "~H(CLR,Z~H(CLR,P~H(CLR,R~H(CMP,U";
const std::string kResolutionQueries = "~H(CLR,Z~H(CLR,P~H(CLR,R~H(CBB,M";
const std::string kStatus = "~H(SMA,S";
const std::string kBackgroundUpload = "^XA^H(YE:KORVDEF.BGD^XZ";

/** One side of the resolution guard. */
inline std::string GuardWrite(const std::string& first, const std::string& second, const std::string& third,
                              const std::string& mode) {
  return "^XA^S(CLR,Z," + first + "^XZ^XA^S(CLR,P," + second + "^XZ^XA^S(CLR,R," + third + "^XZ^XA^S(CMP,U," +
         mode + "^XZ" + kSaving;
}

/** The same where the resolutions must not be changed. */
inline std::string GuardModeWrite(const std::string& mode) {
  return "^XA^S(CMP,U," + mode + "^XZ" + kSaving;
}

const std::string kNeutralise = GuardWrite("600", "600", "600", "D");

inline std::string AllQueries() {
  std::string queries;
  AppendAllQueries(queries);
  return queries;
}

inline std::string Listing(const std::string& files) {
  return "^XA^HW" + files + "^XZ";
}

/** What a module test does with settings, stored files and failing transactions. */
class CTransactionTest : public CModuleTest {
 protected:
  static constexpr std::int32_t kPortCode = 77;

  /** The reading of the answer of the nth transaction from now on fails; the printer has got its commands. */
  void FailTransaction(std::uint32_t nth) {
    constexpr std::uint32_t kCallsOfOne = 4;  // open, send, one poll, read
    world_.FailCall(nth * kCallsOfOne, kPortCode);
  }

  void Restart() {
    TVMGR_Terminate();
    ASSERT_EQ(TVMGR_OK, TVMGR_Initialize());
    SelectUsb();
    world_.ClearLog();
  }

  static std::int32_t SendDirect(std::string_view commands, bool allow_resolution_change) {
    return TVMGR_DirectSendCommand(reinterpret_cast<const std::uint8_t*>(commands.data()),
                                   static_cast<std::int32_t>(commands.size()), allow_resolution_change);
  }

  static void SetRequest(std::uint32_t kind, std::string_view primary, std::string_view secondary = {}) {
    TVMGR_UpdateRegistList(kind, reinterpret_cast<const std::uint8_t*>(primary.data()),
                           static_cast<std::uint32_t>(primary.size()),
                           reinterpret_cast<const std::uint8_t*>(secondary.data()),
                           static_cast<std::uint32_t>(secondary.size()));
  }

  /** The names of a file list. */
  static std::vector<WideString> Names(std::int32_t list) {
    std::uint32_t count = 0;
    EXPECT_EQ(TVMGR_OK, TVMGR_GetRegistFileArraySize(list, &count));
    std::vector<WideString> names;
    for (std::uint32_t i = 0; i < count; ++i) {
      std::uint32_t length = 0;
      const auto index = static_cast<std::int32_t>(i);
      EXPECT_EQ(TVMGR_OK, TVMGR_GetRegistFileArrayData(list, index, nullptr, &length));
      WideString name(++length, TvmgrChar{'?'});
      EXPECT_EQ(TVMGR_OK, TVMGR_GetRegistFileArrayData(list, index, name.data(), &length));
      EXPECT_EQ(TvmgrChar{0}, name.back());
      name.pop_back();
      names.push_back(std::move(name));
    }
    return names;
  }

  /** What the last fetch has stored. */
  static std::string StoredData() {
    std::uint32_t size = 0;
    EXPECT_EQ(TVMGR_OK, TVMGR_GetStoredData(nullptr, &size));
    std::string bytes(size, '?');
    EXPECT_EQ(TVMGR_OK, TVMGR_GetStoredData(reinterpret_cast<std::uint8_t*>(bytes.data()), &size));
    return bytes;
  }
};

}  // namespace tavira::test
