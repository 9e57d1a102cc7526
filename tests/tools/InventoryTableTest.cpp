// SPDX-License-Identifier: MIT
#include "agent/InventoryTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "agent/TextTable.h"

namespace inventory {
namespace {

using testing::HasSubstr;
using testing::Not;
using Row = std::vector<std::string>;

std::string Things(std::size_t limit, const Row& columns, const std::vector<Row>& rows) {
  TextTable table("Things", columns);
  for (const Row& row : rows) table.AddRow(row);
  return table.Format(limit);
}

TEST(TextTable, AlignsByCharactersAndLeavesNoTrailingBlanks) {
  EXPECT_EQ(Things(10, {"NAME", "SIZE"}, {{"caf\xc3\xa9", "1"}, {"tea", ""}}),
            "Things (2)\n  NAME   SIZE\n  caf\xc3\xa9   1\n  tea\n");
}

TEST(TextTable, CountsBytesOutsideUtf8AsCharacters) {
  EXPECT_EQ(CountCharacters(""), 0u);
  EXPECT_EQ(CountCharacters("a\xe2\x82\xac-"), 3u);
  EXPECT_EQ(CountCharacters("\x80x\xff"), 3u);
}

TEST(TextTable, TellsHowManyRowsAreNotShown) {
  const std::vector<Row> rows = {{"0"}, {"1"}, {"2"}, {"3"}, {"4"}};
  EXPECT_EQ(Things(2, {"NAME"}, rows), "Things (5)\n  NAME\n  0\n  1\n  ... and 3 more\n");
  EXPECT_THAT(Things(5, {"NAME"}, rows), Not(HasSubstr("more")));
}

TEST(TextTable, LetsNoServerTextSteerTheTerminal) {
  EXPECT_EQ(Things(1, {"NAME"}, {{"a\x1b[2J\nb\x7f\xc2\x9b;m"}}),
            "Things (1)\n  NAME\n  a?[2J?b??;m\n");
}

TEST(InventoryTable, DecodesEntitiesAndNamesTheHostOfAMachine) {
  Inventory all;
  all.systems.hosts = {{"h1", "R&amp;D", "", "", "V", "M", 3, {"vm1"}}};
  all.systems.machines.resize(2);
  all.systems.machines[0].name = "vm1";
  all.systems.machines[0].elementName = "a &lt;b&gt; &#233;";
  all.systems.machines[0].host = "h1";
  all.systems.machines[1].name = "vm2";
  Lists lists;
  lists.hosts = lists.machines = true;
  const std::string text = ToTables(all, lists, 10);
  EXPECT_THAT(text, HasSubstr("R&D"));
  EXPECT_THAT(text, HasSubstr("degraded"));
  EXPECT_THAT(text, HasSubstr("a <b> \xc3\xa9"));
  EXPECT_THAT(text, HasSubstr("vm1   R&D"));
  EXPECT_THAT(text, HasSubstr("vm2   -"));
}

}  // namespace
}  // namespace inventory
