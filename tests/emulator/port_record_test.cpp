#include "emulator/network/port_record.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "wire.h"

namespace lxemu {
namespace {

std::string Record(std::uint32_t number, const std::string& bytes) {
  return RecordHeader({RecordKind::kCommands, number, static_cast<std::uint32_t>(bytes.size())}) + bytes;
}

/// The requests in the order of their arrival, each as "number:bytes" or "frame:bytes".
std::vector<std::string> Requests(CRequestStream& stream, const std::string& bytes, std::size_t piece) {
  std::vector<std::string> requests;
  for (std::size_t i = 0; i < bytes.size(); i += piece) {
    stream.Append(std::string_view(bytes).substr(i, piece));
    while (const std::optional<tagRequest> request = stream.Next()) {
      requests.push_back((request->number ? std::to_string(*request->number) : "frame") + ":" +
                         std::string(request->bytes));
    }
  }
  return requests;
}

TEST(RequestStream, FindsRecordsAndFramesWhereverTheBytesAreCut) {
  // A record may hold an end mark, or another start; a frame ends at its first end mark.
  const std::string holding = Frame("a" + std::string(kFrameEnd) + "b" + Record(1, "c"));
  const std::string bytes = Record(7, holding) + Frame("plain") + "noise" + Record(0x80000001, "") + "LX" +
                            Frame("") + "\x10\x1B!" + Frame("last");
  const std::vector<std::string> expected = {"7:" + holding, "frame:" + Frame("plain"),
                                             "2147483649:", "frame:" + Frame(""), "frame:" + Frame("last")};
  for (std::size_t piece = 1; piece <= bytes.size(); ++piece) {
    CRequestStream stream;
    EXPECT_EQ(Requests(stream, bytes, piece), expected) << piece;
    EXPECT_EQ(stream.TakeSkipped(), 10u);
    EXPECT_TRUE(stream.IsEmpty());
  }
}

TEST(RequestStream, GivesUpOnARecordBeyondAllMeasure) {
  CRequestStream stream;
  stream.Append(RecordHeader({RecordKind::kCommands, 1, kMaximumRecord + 1}) + "and more");
  EXPECT_EQ(stream.Next(), std::nullopt);
  EXPECT_TRUE(stream.IsBroken());
}

TEST(RequestStream, LooksForTheEndOfALongFrameOnce) {
  const auto start = std::chrono::steady_clock::now();
  CRequestStream stream;
  const std::string piece(16 * 1024, '\x10');
  stream.Append(kFrameStart);
  for (int i = 0; i < 1024; ++i) {
    stream.Append(piece);
    EXPECT_EQ(stream.Next(), std::nullopt);
  }
  stream.Append(kFrameEnd);
  const std::optional<tagRequest> request = stream.Next();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->bytes.size(), 10 + 1024 * piece.size());
  // Looking again with every piece would take minutes.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

}  // namespace
}  // namespace lxemu
