#include "support/module_test.h"

namespace tavira::test {
namespace {

/** An export with its flag as the byte that it is on the wire between modules. */
template <typename Result, typename... Parameters>
auto WithByte(Result (*function)(Parameters...)) {
  return reinterpret_cast<Result (*)(
      std::conditional_t<std::is_same_v<Parameters, bool>, std::uint8_t, Parameters>...)>(
      reinterpret_cast<void*>(function));
}

// What goes over the port for plain operations: tests/unit/manager/exchange_scripts.txt.
using LoadingTest = CModuleTest;

TEST_F(LoadingTest, EveryByteButZeroIsTrue) {
  const std::uint8_t command = 'x';
  const std::pair<const char*, std::function<void(std::uint8_t)>> calls[] = {
      {"all or one", [](std::uint8_t flag) { WithByte (&TVMGR_LoadSetting)(flag, 12); }},
      {"by list", [](std::uint8_t flag) { WithByte (&TVMGR_LoadSettingByList)(flag); }},
      {"direct", [&](std::uint8_t flag) { WithByte (&TVMGR_DirectSendCommand)(&command, 1, flag); }},
  };
  const auto sent_with = [this](const auto& call, std::uint8_t flag) {
    TVMGR_Terminate();
    TVMGR_Initialize();
    world_.printer.SetSetting("CLR,Z", "300");
    TVMGR_SetLoadList(12);
    world_.ClearLog();
    call(flag);
    return world_.Sent();
  };
  for (const auto& [name, call] : calls) {
    const std::vector<std::string> with_true = sent_with(call, 1);
    EXPECT_NE(sent_with(call, 0), with_true) << name;
    for (const int flag : {2, 3, 0x80, 0xFE, 0xFF}) {
      EXPECT_EQ(with_true, sent_with(call, static_cast<std::uint8_t>(flag))) << name << ", " << flag;
    }
  }
}

TEST_F(LoadingTest, GarbageAndACutAnswerCostOnlyWhatTheyHit) {
  world_.printer.Quirks().garbage_between_frames = "\r\n\x03^S(IMP,S,wrong ";
  LoadAll();
  EXPECT_EQ(world_.printer.Setting("IMP,S"), StoredValue(1));
  EXPECT_EQ(world_.printer.Setting("INU,P"), StoredValue(82));
  world_.printer.Quirks().garbage_between_frames.clear();
  world_.port.Faults().cut_answer_at = 40;
  TVMGR_LoadSetting(true, 0);
  EXPECT_EQ(world_.printer.Setting("IMP,S"), StoredValue(1));
  EXPECT_EQ("(none)", StoredValue(82));
}

}  // namespace
}  // namespace tavira::test
