#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "memory_sink.h"
#include "transcript/transcript_reader.h"

namespace recorder {
namespace {

using test::CMemorySink;
using test::WriteAgain;

const std::string kHeader = "Ferrolink transcript 1\n";

std::uint64_t StopWatch() {
  static std::atomic<std::uint64_t> now = 0;
  return now++;
}

tagTranscript Read(const std::string& text) {
  tagTranscript transcript;
  const auto error = ReadTranscript(text, transcript);
  EXPECT_FALSE(error) << "line " << error->line << ": " << error->reason << "\n" << text;
  return transcript;
}

/// Without what differs from run to run: when, how long, and in which line.
std::vector<tagCall> Timeless(tagTranscript transcript) {
  for (tagCall& call : transcript.calls) {
    call.start = call.duration = call.line = 0;
  }
  return transcript.calls;
}

const std::uint8_t* Raw(const std::string& bytes) {
  return reinterpret_cast<const std::uint8_t*>(bytes.data());
}

TEST(Transcript, ShowsEveryCallOnALine) {
  CMemorySink sink;
  std::uint64_t now = 1'000'000;
  CTranscriptWriter writer(sink, [&] { return now += 5; });
  tagRawPortRecord record{2, {u"USB\u00e9\"1\\", nullptr, u""}, {'^', 'F', '\0', 'S'}, 6};
  writer.WriteNote("a note");
  writer.End(writer.BeginInitialize(7, &record), -1012);
  writer.End(writer.BeginInitialize(7, nullptr), 0);
  const std::string sent = "\x10\x1b~H\"\\\r\n\xff";
  writer.End(writer.BeginSend(7, Raw(sent), 9), 0);
  writer.End(writer.BeginSend(7, nullptr, 3), -1003);
  std::uint32_t count = 0;
  auto call = writer.BeginReceive(7, false, &count);
  count = 70'000;
  writer.EndReceive(call, 0, &count, nullptr, 0);
  count = 2;
  writer.EndReceive(writer.BeginReceive(7, true, &count), 0, &count, Raw(sent), 2);
  writer.EndReceive(writer.BeginReceive(7, true, nullptr), -1003, nullptr, nullptr, 0);
  writer.WriteUnseen(7, CallKind::kGetPortComIndex);
  writer.End(writer.BeginTerminate(7), 0);
  writer.WriteEnd(7);
  const std::string text = sink.text;
  EXPECT_EQ(
      text.substr(0, text.find("1.000035")),
      kHeader +
          "# a note\n"
          "1.000005 7 Initialize 2 \"USB\\u00e9\\\"1\\\\\" null \"\" 6 \"^F\\x00S\" = -1012 took 0.000005\n"
          "1.000020 7 Initialize null = 0 took 0.000005\n");
  for (const char* line :
       {" 7 SendData 9 \"\\x10\\x1b~H\\\"\\\\\\r\\n\\xff\" = 0 took 0.000005\n",
        " 7 SendData 3 null = -1003 took ", " 7 ReceiveData null 0 = 0 70000 took ",
        " 7 ReceiveData buffer 2 = 0 2 \"\\x10\\x1b\" took ", " 7 ReceiveData buffer null = -1003 null took ",
        " 7 GetPortComIndex = ?\n", " 7 Terminate = 0 took 0.000005\n"}) {
    EXPECT_NE(text.find(line), text.npos) << line << " in\n" << text;
  }
  const tagTranscript transcript = Read(text);
  EXPECT_TRUE(transcript.has_end);
  ASSERT_EQ(transcript.calls.size(), 9U);
  EXPECT_EQ(transcript.calls[2].bytes, sent);
  EXPECT_EQ(transcript.calls[0].description->texts[0], u"USB\u00e9\"1\\");
  EXPECT_EQ(transcript.calls[0].start, 1'000'005U);
  CMemorySink again;
  CTranscriptWriter second(again, StopWatch);
  WriteAgain(transcript, second);
  EXPECT_EQ(Timeless(Read(again.text)), Timeless(transcript));
}

TEST(Transcript, CallThatNeverReturnsIsThereWithAllItWasGiven) {
  CMemorySink sink;
  CTranscriptWriter writer(sink, StopWatch);
  writer.End(writer.BeginTerminate(1), 0);
  writer.BeginSend(1, Raw("hang"), 4);
  const tagTranscript killed = Read(sink.text);
  ASSERT_EQ(killed.calls.size(), 2U);
  EXPECT_FALSE(killed.calls[1].is_finished);
  EXPECT_EQ(killed.calls[1].bytes, "hang");
  EXPECT_FALSE(killed.is_cut);
  // Or the process ends while the line is written, wherever that is: what stands in front of it counts.
  for (std::size_t size = kHeader.size(); size < sink.text.size(); ++size) {
    const tagTranscript cut = Read(sink.text.substr(0, size));
    EXPECT_LE(cut.calls.size(), 2U);
    EXPECT_TRUE(cut.calls.empty() || cut.is_cut || !cut.calls.back().is_finished || cut.calls.size() == 1);
    EXPECT_FALSE(cut.has_end);
  }
  // A half number is no result.
  EXPECT_FALSE(Read(kHeader + "0.000001 1 Terminate = -1").calls.size());
}

TEST(Transcript, CallsOfSeveralThreadsFindTheirEnds) {
  CMemorySink sink;
  CTranscriptWriter writer(sink, StopWatch);
  const auto slow = writer.BeginSend(1, Raw("slow"), 4);
  const auto quick = writer.BeginTerminate(2);
  writer.End(quick, 5);
  writer.End(slow, -6);
  EXPECT_NE(sink.text.find("\"slow\" ...\n"), sink.text.npos);
  EXPECT_NE(sink.text.find(" 1 ... SendData = -6 took "), sink.text.npos);
  std::vector<std::thread> threads;
  for (std::uint32_t thread = 10; thread < 14; ++thread) {
    threads.emplace_back([&writer, thread] {
      for (std::int32_t i = 0; i < 500; ++i) {
        writer.End(writer.BeginSend(thread, Raw("abc"), 3), static_cast<std::int32_t>(thread) * 1000 + i);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const tagTranscript transcript = Read(sink.text);
  ASSERT_EQ(transcript.calls.size(), 2002U);
  EXPECT_EQ(transcript.calls[0].result, -6);
  std::int32_t next[14] = {};
  for (const tagCall& call : transcript.calls) {
    EXPECT_TRUE(call.is_finished);
    if (call.thread >= 10) {
      EXPECT_EQ(call.result, static_cast<std::int32_t>(call.thread) * 1000 + next[call.thread]++);
    }
  }
}

TEST(Transcript, FullDiskLosesWholeCallsAndSaysHowMany) {
  // Full at every single byte of a recording, with room again later.
  CMemorySink whole;
  const auto record = [](CTranscriptWriter& writer) {
    writer.End(writer.BeginSend(1, Raw("abc"), 3), 0);
    const auto left_open = writer.BeginTerminate(1);
    writer.WriteUnseen(2, CallKind::kClearReceiveData);
    writer.End(left_open, 0);
  };
  CTranscriptWriter plain(whole, StopWatch);
  record(plain);
  const std::vector<tagCall> expected = Timeless(Read(whole.text));
  for (std::size_t room = 0; room <= whole.text.size(); ++room) {
    CMemorySink sink;
    sink.room = room;
    CTranscriptWriter writer(sink, StopWatch);
    record(writer);
    sink.room = std::string::npos;
    writer.End(writer.BeginTerminate(9), 99);
    const std::vector<tagCall> calls = Timeless(Read(sink.text));
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.back().result, 99);
    EXPECT_TRUE(calls.size() == expected.size() + 1 ||
                std::any_of(calls.begin(), calls.end(), [](const tagCall& call) { return call.lost > 0; }))
        << sink.text;
  }
  // When even that half line cannot be taken away, it stays the last one.
  CMemorySink stuck;
  stuck.room = 60;
  stuck.can_cut = false;
  CTranscriptWriter writer(stuck, StopWatch);
  record(writer);
  stuck.room = std::string::npos;
  record(writer);
  EXPECT_TRUE(Read(stuck.text).is_cut);
}

TEST(TranscriptReader, TakesWhatMailAndEditorsDoToLines) {
  const tagTranscript transcript = Read(
      "Ferrolink transcript 1\r\n\r\n# \xc3\xa9\r\n  0.000001  3  SendData  1  \"\\x1B\"  =  0  took  "
      "0.000002\r\n");
  EXPECT_EQ(transcript.calls.size(), 1U);
}

TEST(TranscriptReader, NamesTheLineThatIsNone) {
  struct {
    const char* line;
    const char* reason;
  } const cases[] = {
      {"x", "not understood"},
      {"0.1 1 Terminate = 0 took 0.000001", "not understood"},
      {"0.000001 1 Terminat = 0 took 0.000001", "not understood"},
      {"0.000001 1 Terminate", "not understood"},
      {"0.000001 1 Terminate = 0", "not understood"},
      {"0.000001 1 Terminate = 0 took 0.000001 0", "not understood"},
      {"0.000001 1 Terminate = 9999999999 took 0.000001", "not understood"},
      {"0.000001 -1 Terminate = 0 took 0.000001", "not understood"},
      {"0.000001 1 ... Terminate = 0 took 0.000001", "the rest of a call that has not begun"},
      {"0.000001 1 ... ClearReceiveData = ?", "the rest of a call that has not begun"},
      {"0.000001 1 ClearReceiveData = 0 took 0.000001", "not understood"},
      {"0.000001 1 SendData 3 \"ab\" = 0 took 0.000001", "says 3 bytes and holds 2"},
      {"0.000001 1 SendData 2 \"ab = 0 took 0.000001", "not understood"},
      {"0.000001 1 SendData 2 \"ab\"= 0 took 0.000001", "not understood"},
      {"0.000001 1 SendData 1 \"\\q\" = 0 took 0.000001", "not understood"},
      {"0.000001 1 SendData 1 \"\\x1\" = 0 took 0.000001", "not understood"},
      {"0.000001 1 SendData 1 \"\xe9\" = 0 took 0.000001", "not understood"},
      {"0.000001 1 ReceiveData buffer 9 = 0 4 \"abc\" took 0.000001", "other than 4 bytes received"},
      {"0.000001 1 ReceiveData buffer 9 = 0 4 took 0.000001", "not understood"},
      {"0.000001 1 ReceiveData null 0 = 0 4 \"abcd\" took 0.000001", "not understood"},
      {"0.000001 1 Initialize 1 \"\\u0000\" null null 0 \"\" = 0 took 0.000001", "not understood"},
      {"0.000001 1 Initialize 1 null null null 0 \"12345678901234567\" = 0 took 0.000001",
       "more data than a port description holds, or zeros at its end"},
      {"0.000001 1 lost 0", "not understood"},
      {"0.000001 1 end x", "not understood"},
  };
  for (const auto& test : cases) {
    tagTranscript transcript;
    const auto error =
        ReadTranscript(kHeader + "0.000000 1 Terminate = 0 took 0.000000\n" + test.line + "\n", transcript);
    ASSERT_TRUE(error) << test.line;
    EXPECT_EQ(error->line, 3U);
    EXPECT_EQ(error->reason, test.reason) << test.line;
    EXPECT_EQ(transcript.calls.size(), 1U);
  }
  for (const char* text : {"", "Ferrolink transcript 2\n", "\n"}) {
    tagTranscript transcript;
    EXPECT_EQ(ReadTranscript(text, transcript).value_or(tagReadError{}).line, 1U) << text;
  }
}

}  // namespace
}  // namespace recorder
