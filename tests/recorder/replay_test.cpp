#include <gtest/gtest.h>

#include "transcript/replay.h"
#include "transcript/transcript_reader.h"

namespace recorder {
namespace {

constexpr const char* kTwoExchanges =
    "Ferrolink transcript 1\n"
    "0.000000 1 Initialize 1 \"USB001\" null \"\" 0 \"\" = 0 took 0.000001\n"
    "0.000001 1 SendData 2 \"~A\" = 0 took 0.000001\n"
    "0.000002 1 ReceiveData null 0 = 0 0 took 0.000001\n"
    "0.000003 1 ReceiveData null 0 = 0 3 took 0.000001\n"
    "0.000004 1 ReceiveData buffer 3 = 0 3 \"one\" took 0.000001\n"
    "0.000005 1 Terminate = 4 took 0.000001\n"
    "0.000006 1 Initialize 1 \"USB001\" null \"\" 0 \"\" = 0 took 0.000001\n"
    "0.000007 1 SendData 2 \"~A\" = 0 took 0.000001\n"
    "0.000008 1 ReceiveData null 0 = 0 3 took 0.000001\n"
    "0.000009 1 ReceiveData buffer 3 = 0 3 \"two\" took 0.000001\n"
    "0.000010 1 SendData 2 \"~B\" = 0 took 0.000001\n"
    "0.000011 1 ReceiveData null 0 = 0 0 took 0.000001\n"
    "0.000012 1 ClearReceiveData = ?\n"
    "0.000013 1 Terminate = 0 took 0.000001\n"
    "0.000014 1 end\n";

CReplay Play(const std::string& text, ReplayOrder order = ReplayOrder::kStrict) {
  tagTranscript transcript;
  const auto error = ReadTranscript(text, transcript);
  EXPECT_FALSE(error) << error->line << error->reason;
  return {std::move(transcript), order};
}

std::int32_t Send(CReplay& replay, const std::string& bytes) {
  return replay.SendData(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                         static_cast<std::uint32_t>(bytes.size()));
}

/// The answer that waits; a result other than 0 as text. Asks as often as there is nothing, up to 5 times.
std::string Receive(CReplay& replay, int polls = 5) {
  std::uint32_t count = 0;
  for (int i = 0; i < polls && count == 0; ++i) {
    if (const std::int32_t code = replay.ReceiveData(nullptr, &count); code != 0) {
      return std::to_string(code);
    }
  }
  std::string answer(count, '-');
  const std::int32_t code =
      count == 0 ? 0 : replay.ReceiveData(reinterpret_cast<std::uint8_t*>(answer.data()), &count);
  return code == 0 ? answer.substr(0, count) : std::to_string(code);
}

TEST(Replay, StrictPlaysTheTranscriptOnceWhateverTheClockDoes) {
  for (const int last_polls : {0, 1, 5}) {  // a host that waits shorter, as long, longer
    CReplay replay = Play(kTwoExchanges);
    EXPECT_EQ(replay.Initialize(), 0);
    EXPECT_EQ(Send(replay, "~A"), 0);
    EXPECT_EQ(Receive(replay), "one");
    EXPECT_EQ(replay.Terminate(), 4);
    EXPECT_EQ(replay.Initialize(), 0);
    EXPECT_EQ(Send(replay, "~A"), 0);
    EXPECT_EQ(Receive(replay), "two");
    EXPECT_EQ(replay.Report(), "not complete: the host ended where line 12 is expected");
    EXPECT_EQ(Send(replay, "~B"), 0);
    EXPECT_EQ(Receive(replay, last_polls), "");
    EXPECT_EQ(replay.CallUnseen(CallKind::kClearReceiveData), 0);
    EXPECT_EQ(replay.Terminate(), 0);
    EXPECT_TRUE(replay.IsComplete()) << replay.Report();
    EXPECT_EQ(replay.Initialize(), -2'000'017);
    EXPECT_EQ(replay.Report(), "failed: line 17: the transcript ends here, the host calls Initialize");
  }
}

TEST(Replay, StrictNamesTheLineThatTheHostLeft) {
  struct {
    const char* name;
    std::int32_t (*call)(CReplay&);
    std::int32_t code;
    const char* failure;
  } const cases[] = {
      {"other bytes", [](CReplay& replay) { return Send(replay, "~C"); }, -2'000'003,
       "line 3: expected SendData of 2 bytes, the host sends 2; different from byte 1 on: expected \"~A\", "
       "sent \"~C\""},
      {"more bytes", [](CReplay& replay) { return Send(replay, std::string(20, ' ') + "~A"); }, -2'000'003,
       "line 3: expected SendData of 2 bytes, the host sends 22; different from byte 0 on: expected \"~A\", "
       "sent \""
       "                    ~A\""},
      {"another call", [](CReplay& replay) { return replay.Terminate(); }, -2'000'003,
       "line 3: expected SendData, the host calls Terminate"},
      {"no pointer", [](CReplay& replay) { return replay.SendData(nullptr, 2); }, -2'000'003,
       "line 3: expected SendData of 2 bytes, the host sends 0; different from byte 0 on: expected \"~A\", "
       "sent \"\""},
      {"answer not read",
       [](CReplay& replay) {
         std::uint32_t count = 0;
         Send(replay, "~A");
         replay.ReceiveData(nullptr, &count);
         replay.ReceiveData(nullptr, &count);
         return replay.Terminate();
       },
       -2'000'006, "line 6: expected ReceiveData, the host calls Terminate"},
      {"other room",
       [](CReplay& replay) {
         std::uint32_t count = 2;
         std::uint8_t buffer[2];
         Send(replay, "~A");
         replay.ReceiveData(nullptr, &count);
         replay.ReceiveData(nullptr, &count);
         count = 2;
         return replay.ReceiveData(buffer, &count);
       },
       -2'000'006, "line 6: expected ReceiveData of 3 bytes, the host calls it with room for 2"},
  };
  for (const auto& test : cases) {
    CReplay replay = Play(kTwoExchanges);
    replay.Initialize();
    EXPECT_EQ(test.call(replay), test.code) << test.name;
    EXPECT_EQ(replay.Failure(), test.failure);
    EXPECT_EQ(Send(replay, "~A"), test.code) << "nothing is played after a failure";
    EXPECT_FALSE(replay.IsComplete());
  }
}

TEST(Replay, StrictStopsWhereTheRecordingKnowsNoMore) {
  const std::string start = "Ferrolink transcript 1\n0.000000 1 Terminate = 0 took 0.000001\n";
  const std::pair<const char*, const char*> cases[] = {
      {"", "line 3: the transcript ends here, the host calls Terminate"},
      {"0.000001 1 lost 12\n", "line 3: 12 calls are missing here"},
      {"0.000001 1 Terminate", "line 3: Terminate never came back here"},
  };
  for (const auto& [rest, failure] : cases) {
    CReplay replay = Play(start + rest);
    EXPECT_EQ(replay.Terminate(), 0);
    EXPECT_EQ(replay.Terminate(), -2'000'003);
    EXPECT_EQ(replay.Failure(), failure);
  }
  CReplay broken_off = Play(start);
  broken_off.Terminate();
  EXPECT_EQ(broken_off.Report(), "complete: 1 calls; the recording was broken off there");
}

TEST(Replay, ByCommandAnswersWhatItKnowsInAnyOrder) {
  CReplay replay = Play(kTwoExchanges, ReplayOrder::kByCommand);
  EXPECT_EQ(replay.Initialize(), 0);
  EXPECT_EQ(Send(replay, "~B"), 0);
  EXPECT_EQ(Receive(replay), "");
  for (const char* answer : {"one", "two", "two"}) {
    EXPECT_EQ(Send(replay, "~A"), 0);
    EXPECT_EQ(Receive(replay), answer);
    EXPECT_EQ(Receive(replay), "") << "read once";
  }
  EXPECT_EQ(replay.Terminate(), 0);
  EXPECT_EQ(replay.CallUnseen(CallKind::kGetPortComIndex), 0);
  EXPECT_EQ(replay.Report(), "played 4 commands");
  EXPECT_EQ(Send(replay, "~C"), -2'000'000);
  EXPECT_EQ(replay.Failure(), "no line sends \"~C\" (2 bytes)");
  EXPECT_EQ(Send(replay, "~A"), 0) << "known commands go on";
  // Less room than there is: the rest waits.
  std::uint32_t count = 2;
  char buffer[4] = "...";
  EXPECT_EQ(replay.ReceiveData(reinterpret_cast<std::uint8_t*>(buffer), &count), 0);
  EXPECT_EQ(std::string(buffer) + std::to_string(count), "tw.2");
  EXPECT_EQ(Receive(replay), "o");
  // A port that never opened does not open here, and a failed read fails.
  const std::string failing =
      "Ferrolink transcript 1\n"
      "0.000000 1 Initialize null = -1012 took 0.000001\n"
      "0.000001 1 SendData 2 \"~A\" = 0 took 0.000001\n"
      "0.000004 1 ReceiveData null 0 = -9 0 took 0.000001\n";
  CReplay closed = Play(failing, ReplayOrder::kByCommand);
  EXPECT_EQ(closed.Initialize(), -1012);
  Send(closed, "~A");
  EXPECT_EQ(Receive(closed), "-9");
}

}  // namespace
}  // namespace recorder
