// SPDX-License-Identifier: MIT
#include "tools/inventory/TextTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Answers.h"
#include "tools/common/CellText.h"

namespace tools::inventory {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string Things(TableRoom room, const Row& columns, const std::vector<Row>& rows) {
  TextTable table("Things", columns);
  for (const Row& row : rows) table.AddRow(row);
  return table.Format(room);
}

TEST(CellText, AnswersTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/cells.txt",
                {{"cells", [](const Row& row) { return std::to_string(CellsOf(row[1])); }},
                 {"show", [](const Row& row) { return Printable(row[1]); }},
                 {"cut", [](const Row& row) { return CutToCells(row[1], 3); }}});
}

TEST(TextTable, AlignsByCellsAndLeavesNoTrailingBlanks) {
  EXPECT_EQ(Things({}, {"NAME", "SIZE"}, {{"caf\xc3\xa9", "1"}, {"\xe6\xbc\xa2", "2"}, {"\n", ""}}),
            "Things (3)\n  NAME   SIZE\n  caf\xc3\xa9   1\n  \xe6\xbc\xa2     2\n  ?\n");
}

TEST(TextTable, TellsHowManyRowsAreNotShown) {
  const std::vector<Row> rows = {{"0"}, {"1"}, {"2"}, {"3"}, {"4"}};
  EXPECT_EQ(Things({2, 0}, {"NAME"}, rows), "Things (5)\n  NAME\n  0\n  1\n  ... and 3 more\n");
  EXPECT_THAT(Things({5, 0}, {"NAME"}, rows), Not(HasSubstr("more")));
}

TEST(TextTable, CutsTheWidestColumnsAndAtLastTheLines) {
  const std::vector<Row> rows = {{"a", std::string(30, 'b'), std::string(9, 'c')}};
  EXPECT_EQ(Things({0, 22}, {"A", "B", "C"}, rows),
            "Things (1)\n  A   B        C\n  a   bbbbb\xe2\x80\xa6   ccccc\xe2\x80\xa6\n");
  EXPECT_EQ(Things({0, 8}, {"A", "B", "C"}, rows),
            "Things \xe2\x80\xa6\n  A   B\xe2\x80\xa6\n  a   b\xe2\x80\xa6\n");
}

}  // namespace
}  // namespace tools::inventory
