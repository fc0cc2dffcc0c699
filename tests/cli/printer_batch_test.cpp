// What runs on several printers are made of, as pure functions; built everywhere.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "batch/child_arguments.h"
#include "batch/file_pattern.h"
#include "batch/live_lines.h"
#include "batch/printer_list.h"
#include "batch/verdict.h"
#include "output/command_error.h"

namespace {

using namespace tvmgr;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

std::vector<std::string> Shown(const std::vector<tagListedPrinter>& printers) {
  std::vector<std::string> shown;
  for (const tagListedPrinter& printer : printers) {
    shown.push_back(printer.kind + "=" + printer.value);
  }
  return shown;
}

/** The words of the error that a call ends with; empty: it ended with none. */
template <class Function>
std::string ErrorOf(int exit_code, Function function) {
  try {
    function();
  } catch (const CCommandError& error) {
    EXPECT_EQ(error.ExitCode(), exit_code) << error.what();
    return error.what();
  }
  return {};
}

TEST(PrinterListTest, EntriesAreAddressesPortsDevicesAndNames) {
  EXPECT_THAT(Shown(ParsePrinterText(
                  " 192.0.2.7 ,usb001,,\\\\?\\usb#v#1, Dock 3,name=dock,port= my port ,address=12,")),
              ElementsAre("address=192.0.2.7", "port=usb001", "device=\\\\?\\usb#v#1", "name=Dock 3",
                          "name=dock", "port=my port", "address=12"));
  for (const char* const wrong :
       {"", " , ,", "12", "a,found", "a,port=", "a\x1B[2J", "\xFF\xFE", "a\tb\nc"}) {
    EXPECT_NE(ErrorOf(kExitUsage, [&] { ParsePrinterText(wrong); }), "") << wrong;
  }
}

TEST(PrinterListTest, FilesHaveOneALineWithCommentsInAnyEncodingOfNotepad) {
  const std::string lines =
      "# the shop\r\n192.0.2.7\r\n\r\n  Dock 3 # a name\r\n\\\\?\\usb#v#1\t#device\r\nB\xC3\xBCro";
  std::string little = "\xFF\xFE";
  std::string big = "\xFE\xFF";
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const bool is_umlaut = lines[i] == '\xC3';
    const char c = is_umlaut ? '\xFC' : lines[i];
    little += std::string{c, '\0'};
    big += std::string{'\0', c};
    i += is_umlaut ? 1 : 0;
  }
  for (const std::string& bytes : {lines, "\xEF\xBB\xBF" + lines, little, big}) {
    const std::vector<tagListedPrinter> printers = ParsePrinterFile(bytes, "list.txt");
    EXPECT_THAT(Shown(printers), ElementsAre("address=192.0.2.7", "name=Dock 3", "device=\\\\?\\usb#v#1",
                                             "address=B\xC3\xBCro"));
    EXPECT_EQ(printers[1].where, "line 4");
  }
  EXPECT_THAT(Shown(ParsePrinterFile(std::string_view("\xFF\xFE\x3D\xD8\x00\xDE\x3D\xD8", 8), "")),
              ElementsAre("address=\xF0\x9F\x98\x80\xEF\xBF\xBD"));
  for (const char* const empty : {"", "\n\r\n", "# nothing\n", "\xEF\xBB\xBF", "\xFF\xFE"}) {
    EXPECT_THAT(ErrorOf(kExitInputFile, [&] { ParsePrinterFile(empty, "l"); }),
                HasSubstr("\"l\" names no printer"));
  }
  EXPECT_THAT(ErrorOf(kExitInputFile, [] { ParsePrinterFile("a\n12\n", "l"); }),
              HasSubstr("line 2: \"12\" is a number"));
  for (const char* const line : {"192.0.2.7, 192.0.2.8", "a;b", "\"Dock 3\"", "port=USB001,USB002"}) {
    EXPECT_THAT(ErrorOf(kExitInputFile, [&] { ParsePrinterFile(line, "l"); }),
                HasSubstr("reads like several"))
        << line;
  }
  EXPECT_THAT(Shown(ParsePrinterFile("name=a;\"b\", c", "l")), ElementsAre("name=a;\"b\", c"));
  EXPECT_EQ(ParsePrinterFile(std::string(200 * 2, 'a').replace(1, 1, "\n"), "l").size(), 2U);
}

TEST(PrinterListTest, NamesAreThoseOfASearchAndEveryPrinterIsTakenOnce) {
  const auto found = PrintersOfSearch(nlohmann::ordered_json::parse(R"({"printers": [
      {"kind": "address", "value": "192.0.2.7", "name": "LX-R4100", "second_name": "Dock 3"},
      {"kind": "address", "value": "192.0.2.8", "name": "LX-R4100", "second_name": "twin"},
      {"kind": "device", "value": "usb#1", "name": "Twin", "second_name": null}, {"kind": null, "value": 5}]})"));
  ASSERT_EQ(found.size(), 3U);
  EXPECT_TRUE(PrintersOfSearch(nlohmann::ordered_json::parse("[1]")).empty());
  std::vector<tagListedPrinter> printers =
      ParsePrinterText("DOCK 3 ,name=twin,192.0.2.7,name=none,lpt1,HOST.,LPT1:,host,dock 3 x");
  std::vector<std::string> problems;
  FindNames(printers, found, problems);
  EXPECT_EQ(printers[0].name, "Dock 3");
  const std::vector<std::string> remarks = MergeDuplicates(printers, problems);
  EXPECT_THAT(Shown(printers), ElementsAre("address=192.0.2.7", "name=twin", "name=none", "port=lpt1",
                                           "address=HOST.", "name=dock 3 x"));
  EXPECT_THAT(remarks, ElementsAre("192.0.2.7 is named twice, in entry 1 and entry 3: it is taken once",
                                   "LPT1: is named twice, in entry 5 and entry 7: it is taken once",
                                   "host is named twice, in entry 6 and entry 8: it is taken once"));
  EXPECT_THAT(problems, ElementsAre("", "several printers have this name: 192.0.2.8, usb#1",
                                    "the search found no printer of this name", "", "",
                                    "the search found no printer of this name"));
}

TEST(FilePatternTest, EveryPrinterGetsAFileOfItsOwnWithANameThatWindowsAllows) {
  const std::vector<tagListedPrinter> printers = {{"address", "192.0.2.7:9100", "Dock/3", ""},
                                                  {"port", "COM1", "", ""},
                                                  {"device", "\\\\?\\usb#1", "", ""}};
  const auto expand = [&](const std::string& pattern) {
    return ExpandPattern(pattern, "-o", printers, {"2031-05-04", "13-14-15"});
  };
  EXPECT_THAT(expand("a\\{printer}-{date}_{time}.bak"),
              ElementsAre("a\\192.0.2.7_9100-2031-05-04_13-14-15.bak", "a\\COM1-2031-05-04_13-14-15.bak",
                          "a\\____usb#1-2031-05-04_13-14-15.bak"));
  EXPECT_THAT(expand("a/{printer}.bak"),
              ElementsAre("a/192.0.2.7_9100.bak", "a/_COM1.bak", "a/____usb#1.bak"));
  EXPECT_THAT(expand("{{{number}}}{name}"), ElementsAre("{1}Dock_3", "{2}COM1", "{3}____usb#1"));
  for (const char* const wrong : {"all.bak", "{date}.bak", "{shop}.bak", "{printer", "{}"}) {
    EXPECT_NE(ErrorOf(kExitUsage, [&] { expand(wrong); }), "") << wrong;
  }
  const std::vector<tagListedPrinter> alike = {{"address", "a:1", "", ""}, {"address", "A/1", "", ""}};
  EXPECT_THAT(ErrorOf(kExitUsage, [&] { ExpandPattern("{printer}.bak", "-o", alike, {}); }),
              HasSubstr("a:1 and A/1 would both get \"A_1.bak\""));
}

TEST(ChildArgumentsTest, ChoiceStandsInFrontAndWhatIsNoOptionBehindTheMark) {
  const tagGivenCommand command{
      "put",
      {{"--timeout", {"5"}}, {"--name", {"A B.PNG"}}, {"", {"-x.png", "get"}}, {"--files", {""}}},
      true};
  EXPECT_THAT(ChildArguments(command, {"address", "h 1", "Dock", ""}),
              ElementsAre("--address=h 1", "put", "--timeout=5", "--name=A B.PNG", "--files", "", "--yes",
                          "--json", "--", "-x.png", "get"));
  EXPECT_THAT(ChildArguments({"status", {}, false}, {"device", "\\\\?\\usb#1", "", ""}),
              ElementsAre("--device=\\\\?\\usb#1", "status", "--json"));
}

TEST(ChildArgumentsTest, QuotingSurvivesTheStartUpCodeOfWindowsPrograms) {
  const std::pair<const char*, const char*> cases[] = {{"a", "a"},
                                                       {"", "\"\""},
                                                       {"a b", "\"a b\""},
                                                       {"C:\\a\\", "C:\\a\\"},
                                                       {"C:\\a b\\", "\"C:\\a b\\\\\""},
                                                       {"a\"b", "\"a\\\"b\""},
                                                       {"a\\\"b", "\"a\\\\\\\"b\""},
                                                       {"a\\b c", "\"a\\b c\""},
                                                       {"a\nb", "\"a\nb\""},
                                                       {"*.PNG", "*.PNG"}};
  for (const auto& [argument, quoted] : cases) {
    EXPECT_EQ(QuoteArgument(argument), quoted);
  }
}

tagChildRun Ended(std::uint32_t exit_code, std::string out, std::string err = {}) {
  return {EChildEnd::kItself, exit_code, std::move(out), std::move(err), 1234, {}};
}

std::string Report(int exit_code, const std::string& members, const std::string& error = "null") {
  return R"({"version": 1, "command": "set", "exit_code": )" + std::to_string(exit_code) + R"(, "error": )" +
         error + members + "}\n";
}

TEST(VerdictTest, OnlyAWholeReportThatSaysWhatTheExitCodeSaysCounts) {
  const std::string settings = R"(, "settings": [{"key": "CLM,S", "verdict": "written"}])";
  const std::string error = R"({"text": "it is off", "advice": "switch it on"})";
  const tagPrinterVerdict done =
      Judge(Ended(0, Report(0, settings),
                  "x ... 2 s\nremark: look\r\nTVMGR_X: 0\n\ntoo\ntvmgr: it is off\nlines of it"),
            "set");
  EXPECT_TRUE(done.IsDone());
  EXPECT_EQ(done.result, "CLM,S written");
  EXPECT_EQ(done.reason, "");
  EXPECT_EQ(done.took_ms, 1234U);
  EXPECT_THAT(done.remarks, ElementsAre("look", "too"));
  const struct {
    tagChildRun run;
    std::string word;
    std::string reason;
  } cases[] = {
      {Ended(1, Report(1, settings, error)), "failed", "it is off: switch it on"},
      {Ended(2, Report(2, "", error)), "refused", "it is off"},
      {Ended(3, Report(3, settings, error)), "not proved", "it is off: switch it on"},
      {Ended(4, Report(4, "", R"({"text": "it is off: switch it on", "advice": "switch it on"})")),
       "unreachable", "it is off: switch it on"},
      {Ended(4, Report(4, settings)), "unreachable", "CLM,S written"},
      {Ended(5, Report(5, "", R"({"text": "no file", "advice": null})")), "failed", "no file"},
      {Ended(0, Report(0, settings).substr(0, 60)), "no verdict", "its report is cut short or damaged"},
      {Ended(1, "", "tvmgr: the output cannot be written\r\n"), "no verdict",
       "its tvmgr ended with 1 and without a report (tvmgr: the output cannot be written)"},
      {Ended(0, Report(0, settings) + "{"), "no verdict", "cut short or damaged"},
      {Ended(0, "[" + std::string(100'000, '[')), "no verdict", "cut short or damaged"},
      {Ended(0, Report(1, settings)), "no verdict", "its report says something else"},
      {Ended(7, Report(7, settings)), "no verdict", "its report says something else"},
      {Ended(0, "{}"), "no verdict", "its report says something else"},
      {Ended(0xC0000005, Report(0, settings)), "no verdict",
       "ended with the exception 0xC0000005: what was done"},
      {Ended(0xC000013A, ""), "no verdict", "ended by Ctrl-C: what was done on the printer is not known"},
      {{EChildEnd::kTooLong, 1, Report(0, settings), "", 9, "its tvmgr was ended after 9 s"},
       "no verdict",
       "ended after 9 s: what was done on the printer is not known"},
      {{EChildEnd::kTooMuch, 1, "", "", 9, ""}, "no verdict", "without end"},
      {{EChildEnd::kInterrupted, 1, "", "", 9, ""}, "no verdict", "in the middle by Ctrl-C"},
      {{EChildEnd::kNotStarted, 0, "", "", 0, "no memory"}, "not started", "no memory"},
  };
  for (const auto& [run, word, reason] : cases) {
    const tagPrinterVerdict verdict = Judge(run, "set");
    EXPECT_EQ(verdict.word, word) << run.out;
    EXPECT_THAT(verdict.reason, HasSubstr(reason));
    EXPECT_EQ(verdict.exit_code.has_value(), word != "no verdict" && word != "not started");
    EXPECT_EQ(verdict.document.is_null(), !verdict.exit_code.has_value());
  }
  EXPECT_EQ(Judge(Ended(0, Report(0, settings)), "get").word, "no verdict")
      << "the report of another command";
  EXPECT_EQ(Judge(Ended(1, Report(1, "", R"({"text": "a:\n  b\n", "advice": "c"})")), "set").reason,
            "a:\n  b\n-> c");
}

TEST(VerdictTest, ResultsOfCommandsInAFewWords) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"command": "status", "status_name": "idle", "meaning": "ready"})", "idle (ready)"},
      {R"({"command": "info", "status_name": "idle", "settings": {"IMP,S": "LX"}})", "idle; LX"},
      {R"({"command": "get", "settings": [{"key": "A", "value": "1"}, {"key": "B", "value": null}]})",
       "A=1 B=-"},
      {R"({"command": "get", "settings": [{"value": "1"}, {"value": "1"}, {"value": null}, {"value": "1"}, {"value": ""}]})",
       "4 of 5 settings answered"},
      {R"({"command": "set", "settings": [{"key": "A", "verdict": "written"}, {"key": "B", "verdict": "differs"},
         {"key": "C", "verdict": "written"}]})",
       "A C written; B differs"},
      {R"({"command": "backup", "file": "a.bak", "setting_count": 55, "file_count": 2})",
       "a.bak: 55 settings, 2 files"},
      {R"({"command": "restore", "setting_count": 55, "file_count": 2, "differences": []})",
       "55 settings and 2 files equal"},
      {R"({"command": "restore", "differences": [{"subject": "A.PNG", "verdict": "missing"}]})",
       "A.PNG missing"},
      {R"({"command": "put", "name": "A.PNG", "bytes": 5})", "A.PNG, 5 bytes"},
      {R"({"command": "rm", "files": [{"name": "A", "removed": true}, {"name": "B", "removed": null}]})",
       "A removed; B sent, not proved"},
      {R"({"command": "rm", "dry_run": true, "files": [{"name": "A", "removed": false, "reason": "would be removed"},
           {"name": "B", "removed": false, "reason": "no such file"}]})",
       "A would be removed; B not removed (no such file)"},
      {R"({"command": "export", "file": "a.json", "setting_count": 50})", "a.json: 50 settings"},
      {R"({"command": "apply", "settings": [{"key": "A", "value": "", "verdict": "unchanged"}]})",
       "A unchanged"},
      {R"({"command": "restore", "files": [{"name": "A", "verdict": "not sent"}]})", "A not sent"},
      {R"({"command": "op", "operation": "head-check", "status_name": "busy"})", "head-check, then busy"},
      {R"({"command": "set", "error": {}})", ""},
      {R"({"command": "set", "settings": 5})", ""},
  };
  for (const auto& [document, words] : cases) {
    EXPECT_EQ(DocumentWords(nlohmann::ordered_json::parse(document)), words);
  }
  const auto reasons = [](const char* document) {
    return DocumentReasons(nlohmann::ordered_json::parse(document));
  };
  EXPECT_EQ(reasons(R"({"settings": [{"key": "A", "verdict": "differs", "reason": "refused"},
                        {"key": "B", "verdict": "left out", "reason": "its own"}, {"key": "C", "verdict": "written"}]})"),
            "\nA: refused");
  EXPECT_EQ(reasons(R"({"files": [{"name": "A", "verdict": "failed", "reason": "full"}, 5,
                        {"name": "B", "verdict": "stored and read back", "reason": "its protection was not set: x"}],
                        "settings": 5})"),
            "\nA: full\nB: its protection was not set: x");
}

TEST(LiveLinesTest, WhatDoesNotFitTheWindowLeavesThoseAtWorkAndTheSums) {
  using EState = tagLiveRow::EState;
  std::vector<tagLiveRow> rows(200);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    rows[i].label = "192.0.2." + std::to_string(i);
  }
  rows[0] = {"a", EState::kEnded, "done", "", 1'250};
  rows[1] = {"b\x1B", EState::kRunning, "", "reading\t" + std::string(100, 'x'), 61'000};
  rows[2] = {"c", EState::kEnded, "failed", "", 0};
  const std::vector<std::string> few = LiveLines(rows, 24, 40);
  ASSERT_EQ(few.size(), 2U);
  EXPECT_THAT(few[0], StartsWith("b\\x1B  1 min 1 s  reading\\x09xxx"));
  EXPECT_EQ(few[1], "2 of 200: 1 done, 1 not; 1 at work");
  rows.resize(4);
  EXPECT_THAT(LiveLines(rows, 5, 79),
              ElementsAre("a          done, 1.2 s", StartsWith("b\\x1B      1 min"), "c          failed",
                          "192.0.2.3  -", "2 of 4: 1 done, 1 not; 1 at work"));
  EXPECT_EQ(LiveLines(rows, 4, 79).size(), 2U);
}

}  // namespace
