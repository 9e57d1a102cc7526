// SPDX-License-Identifier: MIT
//
// From the caches to what kecpp-inventory prints, without a daemon.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Rows.h"
#include "tools/inventory/InventoryJson.h"
#include "tools/inventory/InventoryTable.h"
#include "tools/inventory/Options.h"

namespace tools::inventory {
namespace {

using kecpp::Kind;
using testing::HasSubstr;

// A host with one of two machines, a role with a privilege and an identity.
Model Filled() {
  Model model;
  kecpp::Host host{"h1", "R&D", "", "", "cut \xe2\x82", "caf\xc3\xa9 \xff\n\"", 3, {"vm1"}};
  model.Put(Kind::host, "h1", host);
  kecpp::Machine machine;
  machine.key = "vm2";
  machine.name = "two";
  machine.operationalStatus = 15;
  model.Put(Kind::machine, "vm2", machine);
  machine.key = "vm1";
  machine.name = "a <b> \xc3\xa9";
  machine.guestFullName = "guest";
  machine.powerStateText = "poweredOn";
  machine.operationalStatus = 2;
  machine.host = "h1";
  model.Put(Kind::machine, "vm1", machine);
  model.Put(Kind::role, "7", kecpp::Role{"7", "Op", "Operator", "", "", {"P.View"}, {"ann"}});
  model.Put(Kind::privilege, "P.View", kecpp::Privilege{"P.View", "View", {"7"}});
  model.Put(Kind::identity, "ann", kecpp::Identity{"ann", {"7"}});
  return model;
}

// Each row of a file: what is asked for and the document, in which bytes that are not UTF-8 are
// replaced.
TEST(Inventory, IsWrittenAsJsonAndAsTables) {
  const Model model = Filled();
  for (const Row& row : ReadRows(KECPP_TEST_DATA "/json.txt")) {
    Options options;
    const char* const command[] = {"kecpp-inventory", "--show", row[0].c_str()};
    ASSERT_FALSE(ParseOptions(3, command, options));
    EXPECT_EQ(ToJson(model, options.lists), row[1]);
  }
  const Lists all = {FindKind("hosts"), FindKind("machines"), FindKind("roles")};
  const std::string text = ToTables(model, all, {});
  EXPECT_THAT(text, HasSubstr("R&D    h1    degraded   cut ?"));
  EXPECT_THAT(text, HasSubstr("a <b> \xc3\xa9   vm1   R&D    poweredOn   OK        guest"));
  EXPECT_THAT(text, HasSubstr("two       vm2   -                  dormant"));
  EXPECT_THAT(text, HasSubstr("7     Op     Operator          1            ann"));
}

}  // namespace
}  // namespace tools::inventory
