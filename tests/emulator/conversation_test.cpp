// Plays what conversations.txt holds.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <vector>

#include "emulator/memory/printer_ini.h"
#include "emulator/printer/text_escape.h"
#include "test_printer.h"

namespace lxemu {
namespace {

/// The bytes of a line: escapes, and the braces that stand for an answer's frame.
std::string Bytes(const std::string& text) {
  std::string escaped;
  for (const char byte : text) {
    escaped += byte == '{' ? "\\x02" : byte == '}' ? "\\x03\\r\\n" : std::string(1, byte);
  }
  return Unescaped(escaped).value_or("not understood");
}

class CConversation {
 public:
  /// Takes one line apart: what to do, and with what. False when nobody knows it.
  bool Do(const std::string& line) {
    const std::size_t blank = std::min(line.find(' '), line.size());
    const std::string verb = line.substr(0, blank);
    const std::string rest = line.substr(std::min(blank + 1, line.size()));
    if (verb == "=" || verb == "=*") {
      Begin(verb == "=*");
    } else if (is_afresh_ && verb == ">") {
      Begin(false);
      for (const std::string& step : setup_) {
        Do(step);
      }
      is_afresh_ = true;
      is_setup_ = false;
      Say(rest);
    } else {
      if (is_afresh_ && is_setup_) {
        setup_.push_back(line);
      }
      return Step(verb, rest);
    }
    return true;
  }

  /// What was said last has been answered by this much.
  void ExpectAnswered() {
    EXPECT_EQ(Escaped(answer_), Escaped(expected_));
    answer_.clear();
    expected_.clear();
  }

 private:
  void Begin(bool afresh) {
    printer_ = std::make_unique<tagTestPrinter>();
    ini_.clear();
    if (afresh) {
      setup_.clear();
      is_setup_ = true;
    }
    is_afresh_ = afresh;
  }

  void Say(const std::string& text) { answer_ = (*printer_)(Bytes(text)); }

  bool Step(const std::string& verb, const std::string& rest) {
    CPrinter& printer = printer_->printer;
    const std::size_t blank = std::min(rest.find(' '), rest.size());
    const std::string name = rest.substr(0, blank);
    const std::string value = rest.substr(std::min(blank + 1, rest.size()));
    if (verb == ">") {
      Say(rest);
    } else if (verb == "<") {
      expected_ += Bytes(rest);
    } else if (verb == "ini") {
      ini_ += "[" + name + "]\n" + value + "\n";
      const tagPrinterIni ini = ReadPrinterIni(ini_);
      EXPECT_TRUE(ini.problems.empty());
      ApplyIni(ini, printer);
    } else if (verb == "put") {
      EXPECT_TRUE(printer.PutFile(name, Bytes(value)));
    } else if (verb == "guard") {
      printer.SetProtected(name, true);
    } else if (verb == "wait") {
      printer_->now += std::stoul(name);
    } else if (verb == "power") {
      printer.PowerCycle();
    } else if (verb == "reset") {
      printer.FactoryReset();
    } else {
      return Check(printer, verb, rest, name, value);
    }
    return true;
  }

  static bool Check(const CPrinter& printer, const std::string& verb, const std::string& rest,
                    const std::string& name, const std::string& value) {
    if (verb == "is") {
      EXPECT_EQ(printer.Setting(name), value);
    } else if (verb == "file") {
      EXPECT_EQ(printer.File(name), Bytes(value));
    } else if (verb == "gone") {
      EXPECT_EQ(printer.File(name), std::nullopt);
    } else if (verb == "guarded") {
      EXPECT_TRUE(printer.IsProtected(name));
    } else if (verb == "files") {
      std::string files;
      for (const char device : {'E', 'R', 'Z'}) {
        for (const tagStoredFile* file : printer.State().files.Matching(device, "*")) {
          files += (files.empty() ? "" : " ") + std::string(1, device) + ":" + file->name.name;
        }
      }
      EXPECT_EQ(files, rest);
    } else {
      return false;
    }
    return true;
  }

  std::unique_ptr<tagTestPrinter> printer_;
  std::string ini_;
  std::vector<std::string> setup_;
  bool is_afresh_ = false;
  bool is_setup_ = false;
  std::string answer_;
  std::string expected_;
};

TEST(Conversations, GoAsTheyAreWritten) {
  std::ifstream file(CONVERSATIONS);
  CConversation conversation;
  int sends = 0;
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    SCOPED_TRACE("line " + std::to_string(++number) + ": " + line);
    if (line.empty() || line.front() == '#') {
      continue;
    }
    if (line.front() != '<') {
      conversation.ExpectAnswered();
    }
    EXPECT_TRUE(conversation.Do(line));
    sends += line.front() == '>' ? 1 : 0;
  }
  conversation.ExpectAnswered();
  EXPECT_LT(90, sends);  // the file is there
}

}  // namespace
}  // namespace lxemu
