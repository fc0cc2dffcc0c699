// Tables as terminals and files get them; built everywhere.
#include "table/table_text.h"

#include <gtest/gtest.h>

namespace {

using namespace tvmgr;

tagTable Table() {
  return {{"NO", "NAME", "VERDICT"},
          {{{"10"}, {"b"}, {"written", ETone::kGood}},
           {{"9"}, {"B"}, {"differs", ETone::kBad}},
           {{"x"}, {"a"}, {""}}}};
}

tagTableView View(const std::string& columns, const std::string& sort) {
  tagTableView view;
  const tagTable table = Table();
  EXPECT_EQ(columns.empty() ? "" : ReadColumns(columns, table.headings, view), "");
  EXPECT_EQ(sort.empty() ? "" : ReadSort(sort, table.headings, view), "");
  return view;
}

TEST(TableTextTest, ColumnsAndOrderAreThoseOfTheView) {
  const struct {
    std::string columns;
    std::string sort;
    std::string text;
  } cases[] = {
      {"", "", "NO  NAME  VERDICT\n10  b     written\n9   B     differs\nx   a\n"},
      {"verdict,no", "", "VERDICT  NO\nwritten  10\ndiffers  9\n         x\n"},
      {"no", "no", "NO\n9\n10\nx\n"},
      {"no", "No:desc", "NO\nx\n10\n9\n"},
      {"no", "name", "NO\nx\n10\n9\n"},       // by a column that is not shown; equal ones as they came
      {"no", "name:desc", "NO\n10\n9\nx\n"},  // likewise
  };
  for (const auto& shown : cases) {
    EXPECT_EQ(TableText(Table(), View(shown.columns, shown.sort), std::nullopt, false), shown.text)
        << shown.columns << " " << shown.sort;
  }
  const tagTable units{{"VALUE"}, {{{"10 dots"}}, {{"9 dots"}}, {{"1.5 dots"}}}};
  EXPECT_EQ(TableText(units, {{}, "VALUE", false}, std::nullopt, false),
            "VALUE\n9 dots\n10 dots\n1.5 dots\n");
  tagTableView other;
  other.columns = {"UNIT", "NO"};
  other.sort = "UNIT";
  EXPECT_EQ(TableText(Table(), other, std::nullopt, false), "UNIT  NO\n      10\n      9\n      x\n");
  other.columns = {"UNIT"};
  EXPECT_EQ(TableText(Table(), other, std::nullopt, false), TableText(Table(), {}, std::nullopt, false));
}

TEST(TableTextTest, UnknownColumnsAreRefusedWithThoseThatThereAre) {
  const std::vector<std::string> headings{"ID", "IN BACKUPS"};
  tagTableView view;
  EXPECT_EQ(ReadColumns("in-backups,id", headings, view), "");
  EXPECT_EQ(view.columns, (std::vector<std::string>{"IN BACKUPS", "ID"}));
  for (const char* const text : {"", "id,", ",id", "i", "id:desc"}) {
    EXPECT_NE(ReadColumns(text, headings, view = {}).find("the table has: ID, IN BACKUPS"), std::string::npos)
        << text;
  }
  EXPECT_NE(ReadColumns("id,ID", headings, view = {}), "");
  EXPECT_NE(ReadSort("id:up", headings, view), "");
}

TEST(TableTextTest, ColoursTakeNoRoomAndCutCellsKeepTheirs) {
  EXPECT_EQ(TableText(Table(), View("verdict,no", ""), 10, true),
            "VERDI…  NO\n\x1B[32mwritt…\x1B[0m  10\n\x1B[31mdiffe…\x1B[0m  9\n        x\n");
  EXPECT_EQ(Coloured("sent", ETone::kPlain), "sent");
}

}  // namespace
