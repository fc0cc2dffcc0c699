#include <gmock/gmock.h>

#include "cli_fixture.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class CFilesTest : public CCliTest {};

TEST_F(CFilesTest, PutStoresEachKindWithItsBytes) {
  const std::string bytes = AllBytes(1000);
  const std::string picture = "\x89PNG\r\n\x1A\n" + bytes + "IEND\xAE\x42\x60\x82";
  const std::string font = std::string("\0\1\0\0", 4) + bytes;
  const struct {
    std::string host_name;
    std::string contents;
    std::vector<std::string> options;
    std::string stored_name;
    std::string stored;
  } cases[] = {
      {"logo.png", picture, {}, "LOGO.PNG", picture},
      {"b\xC3\xA4r.png",
       bytes.substr(0, 998),
       {"--name", "BEAR.GRF", "--row-bytes", "2"},
       "BEAR.GRF",
       bytes.substr(0, 998)},
      {"font.tte", font, {}, "FONT.TTE", font},
      {"any.bin", "x", {"--name", "KORVDEF", "--kind", "background"}, "KORVDEF.BGD", "x"},
      {"label.zpl", "^XA^FO1,1^FDx^FS^XZ\r\n", {}, "LABEL.ZPL", "^FO1,1^FDx^FS"},
      {"bare.fmt", "^FDy^FS", {"--kind", "format"}, "BARE.FMT", "^FDy^FS"},
      {"ready.txt", "^XA^DFE:READY.ZPL^FS^FDz^FS^XZ", {}, "READY.ZPL", "^FDz^FS"},
      {"object.txt", "~DYE:RAW,B,T,3,0,abc", {}, "RAW.TTF", "abc"},
  };
  // One after the other: the printer's memory is one folder, and all of them write to it.
  for (const auto& file : cases) {
    std::vector<std::string> put = {"put", HostFile(file.host_name, file.contents)};
    put.insert(put.end(), file.options.begin(), file.options.end());
    const tagRun run = Tvmgr(put);
    EXPECT_EQ(run.exit_code, 0U) << file.host_name << ": " << run.err;
    EXPECT_EQ(StoredOnE(file.stored_name), file.stored) << file.host_name;
  }
}

TEST_F(CFilesTest, ListsFetchesAndRemoves) {
  const std::string bytes = AllBytes(5000);
  StoreOnE("LOGO.PNG", bytes);
  StoreOnE("FONT.TTF", "font");
  StoreOnE("LABEL.ZPL", "^FDx^FS");
  const std::string target = HostFile("r\xC3\xA9sultat.png", "older and longer contents");
  const std::vector<tagRun> runs = TvmgrEach({{"files", "--json"},
                                              {"files", "--list", "format"},
                                              {"fetch", "logo.png"},
                                              {"fetch", "LABEL.ZPL"},
                                              {"fetch", "LOGO.PNG", "-o", target, "--yes", "--json"}});
  for (const tagRun& run : runs) {
    EXPECT_EQ(run.exit_code, 0U) << run.err;
  }
  EXPECT_EQ(json::parse(runs[0].out)["files"],
            json::parse(R"([{"list":30,"type":"png","kind":"graphic","name":"LOGO.PNG"},
                                             {"list":31,"type":"ttf","kind":"font","name":"FONT.TTF"},
                                             {"list":75,"type":"zpl","kind":"format","name":"LABEL.ZPL"}])"));
  EXPECT_EQ(runs[1].out, "TYPE  KIND    NAME\nzpl   format  LABEL.ZPL\n");
  // To a pipe and to a file, without a byte more or less.
  EXPECT_EQ(runs[2].out, bytes);
  EXPECT_EQ(runs[3].out, "^XA^DFE:LABEL.ZPL^FS^FDx^FS^XZ");
  EXPECT_EQ(json::parse(runs[4].out)["bytes"], 5000);
  EXPECT_EQ(ReadFileBytes(HostPath("r\xC3\xA9sultat.png")), bytes);

  const tagRun removed = Tvmgr({"rm", "LOGO.PNG", "NONE.PNG", "LABEL.ZPL", "--yes"});
  EXPECT_EQ(removed.exit_code, 1U);
  EXPECT_EQ(removed.out,
            "NAME       REMOVED  REASON\n"
            "LOGO.PNG   yes\n"
            "NONE.PNG   no       the printer has no such file\n"
            "LABEL.ZPL  yes\n");
  EXPECT_EQ(StoredOnE("LOGO.PNG") + StoredOnE("LABEL.ZPL"), "");
  EXPECT_EQ(StoredOnE("FONT.TTF"), "font");
}

TEST_F(CFilesTest, WhatIsNotThereOrCannotBeStoredIsAFailure) {
  const std::string two = HostFile("two.zpl", "^XA^FDa^FS^XZ^XA^FDb^FS^XZ");
  struct tagFailing {
    std::vector<std::string> arguments;
    unsigned exit_code;
    std::string why;
  };
  const std::vector<tagFailing> cases = {
      {{"fetch", "NONE.PNG"}, 1, "no file NONE.PNG"},
      {{"fetch", "NONE.PNG", "--unlisted", "--wait", "0.3"}, 1, "sent nothing"},
      {{"put", "C:\\no\\such\\file.png"}, 5, "cannot be opened"},
      {{"put", two}, 1, "more than one format"},
      {{"put", HostFile("text.png", "text")}, 5, "is no PNG picture"},
      {{"put", HostFile("cut.png", "\x89PNG\r\n\x1A\n")}, 5, "was cut off"},
      {{"put", HostFile("text.ttf", "true")}, 5, "is no TrueType font"},
      {{"put", HostFile("a.grf", "12345")}, 2, "--row-bytes"},
      {{"put", HostFile("b.grf", "12345"), "--row-bytes", "2"}, 2, "no whole number of rows"},
      {{"put", HostFile("a-long-name.png", "")}, 5, "is empty"},
      {{"put", HostFile("a-long-name.zpl", "^FDx^FS")}, 2, "--name"},
      {{"put", HostFile("a.zpl", "^FDx^FS"), "--name", "A B.ZPL"}, 2, "holds a blank"},
      {{"put", HostFile("a.cnv", "x")}, 2, "give a name that ends in"},
      {{"fetch", "LOGO.PNG", "-o", "C:\\no\\such\\folder\\x"}, 1, "cannot be created"},
  };
  StoreOnE("LOGO.PNG", "bytes");
  std::vector<std::vector<std::string>> all;
  for (const tagFailing& failing : cases) {
    all.push_back(failing.arguments);
  }
  const std::vector<tagRun> runs = TvmgrEach(all);
  for (std::size_t i = 0; i < runs.size(); ++i) {
    EXPECT_EQ(runs[i].exit_code, cases[i].exit_code) << testing::PrintToString(cases[i].arguments);
    EXPECT_THAT(runs[i].err, HasSubstr(cases[i].why));
    EXPECT_EQ(runs[i].out, "");
  }
  // A protected file stays, and is listed all the same.
  HostFile("printer/attributes.txt", "E:LOGO.PNG\n");
  const tagRun kept = Tvmgr({"put", HostFile("logo.png", "\x89PNG\r\n\x1A\nIEND\xAE\x42\x60\x82"), "--yes"});
  EXPECT_EQ(kept.exit_code, 1U);
  EXPECT_THAT(kept.err, HasSubstr("other contents under that name"));
  const tagRun open = Tvmgr({"put", HostFile("raw.txt", "~DYE:RAW,A,T,3,0,abc")});
  EXPECT_EQ(open.exit_code, 3U);
  EXPECT_THAT(open.err, HasSubstr("RAW.TTF: listed, content not compared"));
  // A format that the printer drops: the module reports success, the list does not.
  WriteIni("[printer]\ndevice_capacity=10\n");
  const tagRun full = Tvmgr({"put", HostFile("label.zpl", "^XA^FO10,10^FDlong enough^FS^XZ")});
  EXPECT_EQ(full.exit_code, 1U);
  EXPECT_THAT(full.err, HasSubstr("does not list it"));
}

TEST_F(CFilesTest, WhatComesWithoutItsEndIsNotTakenForTheFile) {
  StoreOnE("LOGO.PNG", "\x89PNG\r\n\x1A\n" + AllBytes(1000) + "IEND\xAE\x42\x60\x82");
  StoreOnE("LABEL.ZPL", "^FDx^FS^FDy^FS");
  const std::string target = HostFile("logo.png", "older");
  WriteIni("[faults]\ncut_at=400\ncut_from=2\n");
  const tagRun picture = Tvmgr({"fetch", "LOGO.PNG", "--unlisted", "-o", target, "--yes"});
  EXPECT_EQ(picture.exit_code, 3U) << picture.err;
  EXPECT_THAT(picture.err, HasSubstr("LOGO.PNG came without its end"));
  EXPECT_EQ(ReadFileBytes(target), "older");
  EXPECT_GT(ReadFileBytes(target + ".partial").size(), 100U);
  WriteIni("[faults]\ncut_at=30\ncut_from=2\n");
  const tagRun format = Tvmgr({"fetch", "LABEL.ZPL", "--unlisted"});
  EXPECT_EQ(format.exit_code, 3U) << format.out;
}

TEST_F(CFilesTest, EmptyListsOfAPrinterThatFallsSilentProveNothing) {
  StoreOnE("LOGO.PNG", "bytes");
  // The answers count from the status: the guard's, the settings, eight lists, the reload, the status.
  WriteIni("[faults]\ncut_at=1\ncut_from=14\n");
  const tagRun removed = Tvmgr({"rm", "LOGO.PNG", "--yes"});
  EXPECT_EQ(removed.exit_code, 4U) << removed.out;
  EXPECT_THAT(removed.err, HasSubstr("no longer answers"));
  WriteIni("[faults]\ncut_at=1\ncut_from=4\n");
  EXPECT_EQ(Tvmgr({"files"}).exit_code, 4U);
  WriteIni("[faults]\ncut_at=600\n");
  const tagRun cut = Tvmgr({"files"});
  EXPECT_EQ(cut.exit_code, 3U);
  EXPECT_THAT(cut.err, HasSubstr("there may be more files"));
  StoreOnE("LOGO.PNG", "bytes");
  const tagRun sent = Tvmgr({"rm", "LOGO.PNG", "--yes"});
  EXPECT_EQ(sent.exit_code, 3U);
  EXPECT_THAT(sent.out, HasSubstr("LOGO.PNG  sent"));
}

}  // namespace
