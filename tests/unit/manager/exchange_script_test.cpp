// Plays what exchange_scripts.txt holds.
#include <algorithm>
#include <fstream>
#include <sstream>

#include "emulator/printer/text_escape.h"
#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

/** One script line in words; what stands behind the first, and behind the second. */
struct tagLine {
  explicit tagLine(const std::string& line) : verb(Cut(line, rest)), first(Cut(rest, second)) {}

  static std::string Cut(const std::string& text, std::string& behind) {
    const std::size_t blank = std::min(text.find(' '), text.size());
    behind = text.substr(std::min(blank + 1, text.size()));
    return text.substr(0, blank);
  }
  std::int32_t Number(const std::string& word) const {
    return static_cast<std::int32_t>(std::stol(word, nullptr, 0));
  }

  std::string rest;
  std::string second;
  std::string verb;
  std::string first;
};

/** The bytes of a line: names in braces stand for the commands that recur, then escapes for bytes. */
std::string Bytes(const std::string& line) {
  static const std::map<std::string, std::string> names{{"closing", kClosing},
                                                        {"saving", kSaving},
                                                        {"capture", kCapture},
                                                        {"neutral", kNeutralise},
                                                        {"resolutions", kResolutionQueries},
                                                        {"status", kStatus},
                                                        {"all", AllQueries()},
                                                        {"background", kBackgroundUpload}};
  std::string text;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const std::size_t end = line[at] == '{' ? line.find('}', at) : std::string::npos;
    if (end == std::string::npos) {
      text += line[at];
      continue;
    }
    std::string argument;
    const std::string name = tagLine::Cut(line.substr(at + 1, end - at - 1), argument);
    std::string parts[4];
    std::istringstream fields(argument);
    for (int i = 0; i < 4; ++i) {
      std::getline(fields, parts[i], i < 3 ? ',' : '\n');
    }
    text += name == "guard"  ? GuardWrite(parts[0], parts[1], parts[2], parts[3])
            : name == "mode" ? GuardModeWrite(argument)
            : name == "set"  ? "^XA^S(" + argument + "^XZ"
            : name == "list" ? Listing(argument)
                             : names.at(name);
    at = end;
  }
  return lxemu::Unescaped(text).value_or("not understood");
}

class ExchangeScriptTest : public CTransactionTest {
 protected:
  void Do(const std::string& text) {
    const tagLine line(text);
    EXPECT_TRUE(text.starts_with("= ") || Arrange(line) || Operate(line) || Check(line))
        << "nobody knows this";
  }

  /** Before the next operation: what the last one has sent, and given. */
  void Finish() {
    if (!expected_.empty()) {
      EXPECT_EQ(expected_, world_.Sent());
    }
    EXPECT_EQ(expected_result_, result_);
    expected_.clear();
    result_ = expected_result_ = TVMGR_OK;
    at_.clear();
  }

 private:
  bool Arrange(const tagLine& line) {
    lxemu::CPrinter& printer = world_.printer;
    lxemu::tagQuirks& quirks = printer.Quirks();
    const std::string value = Bytes(line.second);
    const std::map<std::string, std::function<void()>> verbs{
        {"set", [&] { printer.SetSetting(line.first, value); }},
        {"put", [&] { printer.PutFile(Bytes(line.first), value); }},
        {"guard", [&] { printer.SetProtected(line.first, true); }},
        {"erase", [&] { printer.Execute("^XA^ID" + line.first + "^XZ"); }},
        {"answer", [&] { quirks.fixed_answers[line.first] = value; }},
        {"mute", [&] { quirks.unanswered_keys.insert(line.first); }},
        {"refuse", [&] { quirks.refused_keys.insert(line.first); }},
        {"short-names", [&] { quirks.short_format_names = true; }},
        {"refuse-all", [&] { quirks.ignore_sets = true; }},
        {"garbage", [&] { quirks.garbage_between_frames = Bytes(line.rest); }},
        {"room", [&] { quirks.device_capacity = std::stoul(line.first); }},
        {"quick", [&] { quirks.maintenance_ms = 0; }},
        {"late",
         [&] { world_.port.Faults().latency_ms = static_cast<std::uint32_t>(line.Number(line.first)); }},
        {"cut",
         [&] { world_.port.Faults().cut_answer_at = static_cast<std::size_t>(line.Number(line.first)); }},
        {"plain", [&] { quirks = {}; }},
        {"deaf", [&] { world_.port.Faults().silent = true; }},
        {"power", [&] { printer.PowerCycle(); }},
        {"factory", [&] { printer.FactoryReset(); }},
        {"fail", [&] { FailTransaction(static_cast<std::uint32_t>(line.Number(line.first))); }},
        {"fresh", [&] { Finish(), Restart(); }},
        {"nobody", [&] { TVMGR_Terminate(), TVMGR_Initialize(); }},
        {"list",
         [&] {
           std::istringstream ids(line.rest);
           for (std::uint32_t id = 0; ids >> id;) {
             TVMGR_SetLoadList(id);
           }
         }},
        {"clear-list", [] { TVMGR_ClearLoadList(); }},
        {"update", [&] { AppendUpdate(static_cast<std::uint32_t>(line.Number(line.first)), value); }},
        {"clear-update", [] { TVMGR_ClearUpdateList(); }},
        {"request",
         [&] {
           const std::size_t bar = std::min(line.second.find(" | "), line.second.size());
           SetRequest(static_cast<std::uint32_t>(line.Number(line.first)), Bytes(line.second.substr(0, bar)),
                      Bytes(line.second.substr(std::min(bar + 3, line.second.size()))));
         }},
        {"at", [&] { at_.emplace_back(line.first, line.second); }}};
    const auto found = verbs.find(line.verb);
    if (found == verbs.end()) {
      return false;
    }
    found->second();
    return true;
  }

  bool Operate(const tagLine& line) {
    const std::map<std::string, std::function<std::int32_t()>> verbs{
        {"load",
         [&] {
           return TVMGR_LoadSetting(line.first == "all", line.first == "all" ? 0 : line.Number(line.first));
         }},
        {"load-list", [&] { return TVMGR_LoadSettingByList(line.first == "1"); }},
        {"prefix",
         [&] {
           const auto byte = [&](std::size_t at) { return static_cast<std::uint8_t>(line.first.at(at)); };
           return TVMGR_UpdatePrefix(byte(0), byte(1), byte(2));
         }},
        {"status", [&] { return TVMGR_GetPrinterStatus(&status_); }},
        {"ask-prefix", [&] { return TVMGR_IsDefaultPrefix(&is_default_); }},
        {"fetch",
         [&] {
           const tagLine more(line.second);
           const std::string name = Bytes(more.rest);
           WideString wide(name.begin(), name.end());
           std::transform(name.begin(), name.end(), wide.begin(),
                          [](char byte) { return static_cast<TvmgrChar>(static_cast<unsigned char>(byte)); });
           return TVMGR_LoadStoredData(wide.c_str(), static_cast<std::uint8_t>(line.Number(line.first)),
                                       static_cast<std::uint32_t>(more.Number(more.verb)));
         }},
        {"write", [] { return TVMGR_UpdatePrinterSetting(); }},
        {"write-fixed", [] { return TVMGR_UpdatePrinterSettingNoChangeDPI(); }},
        {"register", [] { return TVMGR_RegistData(); }},
        {"delete", [] { return TVMGR_DeleteData(); }},
        {"direct", [&] { return SendDirect(Bytes(line.second), line.first == "1"); }},
        {"operation", [&] {
           const std::string data = Bytes(line.second);
           TVMGR_SetExecuteList(static_cast<std::uint32_t>(std::stoul(line.first, nullptr, 0)),
                                data.empty() ? nullptr : reinterpret_cast<const std::uint8_t*>(data.data()),
                                static_cast<std::int32_t>(data.size()));
           return TVMGR_ExecutePrinterOperation();
         }}};
    const auto found = verbs.find(line.verb);
    if (found == verbs.end()) {
      return false;
    }
    const auto at = at_;
    Finish();
    world_.before_send = [this, at] {
      for (const auto& [count, what] : at) {
        if (count == "*" || std::stoul(count) == world_.Sent().size()) {
          Do(what);
        }
      }
    };
    world_.ClearLog();
    start_ = world_.clock.Now();
    result_ = found->second();
    took_ = world_.clock.Now() - start_;
    world_.before_send = nullptr;
    return true;
  }

  bool Check(const tagLine& line) {
    const Transactions sent = world_.Sent();
    if (line.verb == ">") {
      expected_.push_back(Bytes(line.rest));
    } else if (line.verb == "silent") {
      EXPECT_TRUE(world_.calls.empty());
    } else if (line.verb == "gives") {
      expected_result_ = line.Number(line.first);
    } else if (line.verb == "took") {
      EXPECT_EQ(line.first, std::to_string(took_));
    } else if (line.verb == "count") {
      EXPECT_EQ(line.first, std::to_string(sent.size()));
    } else if (line.verb == "nth") {
      EXPECT_EQ(Bytes(line.second), sent.at(std::stoul(line.first)));
    } else if (line.verb == "last") {
      EXPECT_EQ(Bytes(line.rest), sent.back());
    } else if (line.verb == "stored") {
      EXPECT_EQ(Bytes(line.second), StoredValue(line.Number(line.first)));
    } else if (line.verb == "differs") {
      EXPECT_NE(Bytes(line.second), StoredValue(line.Number(line.first)));
    } else if (line.verb == "is") {
      EXPECT_EQ(Bytes(line.second), world_.printer.Setting(line.first));
    } else if (line.verb == "clock") {
      EXPECT_EQ(line.rest, world_.printer.ClockText());
    } else if (line.verb == "data") {
      EXPECT_EQ(Bytes(line.rest), StoredData());
    } else if (line.verb == "state") {
      EXPECT_EQ(line.first, std::to_string(status_));
    } else if (line.verb == "default") {
      EXPECT_EQ(line.first, std::to_string(is_default_));
    } else if (line.verb == "file" || line.verb == "gone") {
      EXPECT_EQ(line.verb == "file", world_.printer.File(Bytes(line.first)).has_value());
    } else if (line.verb == "names") {
      std::string names;
      for (const WideString& name : Names(line.Number(line.first))) {
        names += names.empty() ? "" : " ";
        std::transform(name.begin(), name.end(), std::back_inserter(names),
                       [](TvmgrChar c) { return static_cast<char>(c); });
      }
      EXPECT_EQ(Bytes(line.second), names);
    } else {
      return false;
    }
    return true;
  }

  Transactions expected_;
  std::vector<std::pair<std::string, std::string>> at_;
  std::uint32_t status_ = 99;
  std::uint8_t is_default_ = 9;
  std::int32_t result_ = TVMGR_OK;
  std::int32_t expected_result_ = TVMGR_OK;
  std::uint64_t start_ = 0;
  std::uint64_t took_ = 0;
};

TEST_F(ExchangeScriptTest, EachGoesAsItIsWritten) {
  std::ifstream file(EXCHANGE_SCRIPTS);
  std::string line;
  int number = 0;
  int titles = 0;
  while (std::getline(file, line)) {
    SCOPED_TRACE("line " + std::to_string(++number) + ": " + line);
    if (line.empty() || line.front() == '#') {
      continue;
    }
    if (line.starts_with("= ")) {
      Finish();
      world_.printer.FactoryReset();
      world_.printer.Quirks() = {};
      world_.port.Faults() = {};
      world_.FailCall(0, 0);
      SelectUsb();
      Restart();
      ++titles;
    }
    Do(line);
  }
  Finish();
  EXPECT_LT(50, titles);  // the file is there
}

}  // namespace
}  // namespace tavira::test
