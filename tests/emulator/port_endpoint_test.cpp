#include "emulator/port/port_endpoint.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "test_printer.h"

namespace lxemu {
namespace {

/// The description record as a 64-bit host lays it out.
struct tagDescription {
  std::int32_t port_type = 3;
  const char16_t* strings[3] = {};
  char data[16] = {};
  std::int32_t data_used = 0;
};
static_assert(sizeof(tagDescription) == 56 && offsetof(tagDescription, data_used) == 48);

class PortEndpoint : public testing::Test {
 protected:
  std::int32_t Open() { return port.Initialize(&description); }
  std::int32_t SendRaw(const std::string& bytes) {
    return port.SendData(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                         static_cast<std::uint32_t>(bytes.size()));
  }
  std::int32_t Send(const std::string& commands) {
    return SendRaw("\x10\x1B\x1D\x1B\x1B" + commands + "\x10\x1B\x1D\x1B\x1C");
  }
  std::uint32_t Waiting() {
    std::uint32_t count = 0;
    EXPECT_EQ(port.ReceiveData(nullptr, &count), kPortOk);
    return count;
  }
  std::string Read(std::uint32_t room = 1000) {
    std::string buffer(room, '#');
    EXPECT_EQ(port.ReceiveData(reinterpret_cast<std::uint8_t*>(buffer.data()), &room), kPortOk);
    return buffer.substr(0, room);
  }

  tagTestPrinter printer;
  tagDescription description;
  CPortEndpoint port{printer.printer, [this] { return printer.now; }};
};

const std::string kAnswer = Framed("^S(CLR,Z,600");

TEST_F(PortEndpoint, AnswersWholeAfterItsLatency) {
  port.Faults().latency_ms = 50;
  ASSERT_EQ(Open(), kPortOk);
  ASSERT_EQ(Send("~H(CLR,Z"), kPortOk);
  printer.now += 49;
  EXPECT_EQ(Waiting(), 0u);
  EXPECT_EQ(Read(), "");
  printer.now += 1;
  EXPECT_EQ(Waiting(), kAnswer.size());
  EXPECT_EQ(Read(5), kAnswer.substr(0, 5));
  EXPECT_EQ(Waiting(), kAnswer.size() - 5);
  EXPECT_EQ(Read(), kAnswer.substr(5));
  EXPECT_EQ(Waiting(), 0u);
  ASSERT_EQ(port.Exchanges().size(), 1u);
  EXPECT_EQ(port.Exchanges()[0].sent, "~H(CLR,Z");
  EXPECT_EQ(port.Exchanges()[0].answer, kAnswer);
}

TEST_F(PortEndpoint, AnswersEndWithTheExchange) {
  ASSERT_EQ(Open(), kPortOk);
  Send("~H(CLR,Z");
  Send("^XA^JUS^XZ");
  EXPECT_EQ(Waiting(), 0u);
  Send("~H(CLR,Z");
  EXPECT_EQ(port.ClearReceiveData(), kPortOk);
  EXPECT_EQ(Waiting(), 0u);
  Send("~H(CLR,Z");
  port.Terminate();
  Open();
  EXPECT_EQ(Waiting(), 0u);
}

TEST_F(PortEndpoint, BytesWithoutAProperFrameAreLost) {
  ASSERT_EQ(Open(), kPortOk);
  const std::string start = "\x10\x1B\x1D\x1B\x1B";
  const std::string end = "\x10\x1B\x1D\x1B\x1C";
  for (const std::string& bytes :
       {std::string("~H(CLR,Z"), start + "~H(CLR,Z", "~H(CLR,Z" + end, end + "~H(CLR,Z" + start,
        " " + start + "~H(CLR,Z" + end, std::string("\x10\x1B\x1D\x1B\x1B\x1C"), std::string()}) {
    EXPECT_EQ(SendRaw(bytes), kPortOk);
    EXPECT_EQ(Waiting(), 0u);
  }
  EXPECT_EQ(port.BadFrameCount(), 7);
  EXPECT_EQ(Send(""), kPortOk);
  EXPECT_EQ(port.BadFrameCount(), 7);
}

TEST_F(PortEndpoint, WrongUseHasItsOwnCodes) {
  std::uint32_t count = 7;
  EXPECT_EQ(Send("~H(CLR,Z"), kPortNotOpen);
  EXPECT_EQ(port.ReceiveData(nullptr, &count), kPortNotOpen);
  EXPECT_EQ(port.ClearReceiveData(), kPortNotOpen);
  EXPECT_EQ(port.Terminate(), kPortNotOpen);
  EXPECT_EQ(port.Initialize(nullptr), kPortNullPointer);
  EXPECT_EQ(Open(), kPortOk);
  EXPECT_EQ(Open(), kPortAlreadyOpen);
  EXPECT_TRUE(port.IsOpen());
  EXPECT_EQ(port.ReceiveData(nullptr, nullptr), kPortNullPointer);
  EXPECT_EQ(port.SendData(nullptr, 1), kPortNullPointer);
  EXPECT_EQ(port.Terminate(), kPortOk);
  EXPECT_EQ(port.OpenCount(), 1);
  EXPECT_EQ(port.CloseCount(), 1);
  EXPECT_EQ(port.TerminateCount(), 2);
  EXPECT_EQ(count, 7u);
}

TEST_F(PortEndpoint, RemembersTheDescription) {
  description = {2, {u"first", nullptr, u"third"}, "^FX^FS", 1'000'000};  // more than the field holds
  Open();
  EXPECT_EQ(port.LastPortType(), 2);
  EXPECT_EQ(port.LastString(1) + port.LastString(2) + port.LastString(3), u"firstthird");
  EXPECT_EQ(port.LastData(), std::string("^FX^FS").append(10, '\0'));
}

TEST_F(PortEndpoint, SilenceAndCutAnswersDoNotStopThePrinter) {
  Open();
  port.Faults().silent_from = 2;
  Send("~H(CLR,Z");
  EXPECT_EQ(Waiting(), kAnswer.size());
  Send("^XA^S(CLR,Z,300^XZ~H(CLR,Z");
  EXPECT_EQ(Waiting(), 0u);
  Send("~H(CLR,Z");
  EXPECT_EQ(Waiting(), 0u);
  EXPECT_EQ(printer.printer.Setting("CLR,Z"), "300");
  port.Faults() = {};
  port.Faults().cut_answer_at = 4;
  port.Faults().cut_from = 2;
  Send("~H(CLR,Z");
  EXPECT_EQ(Read().size(), kAnswer.size());
  Send("~H(CLR,Z");
  EXPECT_EQ(Read(), kAnswer.substr(0, 4));
  port.Faults().silent = true;
  Send("~H(CLR,Z");
  EXPECT_EQ(Waiting(), 0u);
}

}  // namespace
}  // namespace lxemu
