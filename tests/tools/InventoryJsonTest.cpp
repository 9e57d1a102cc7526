// SPDX-License-Identifier: MIT
#include "tools/inventory/InventoryJson.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/Rows.h"
#include "tools/inventory/Options.h"

namespace tools::inventory {
namespace {

// A file says which lists are shown, and as what.
TEST(InventoryJson, WritesEveryFieldOfWhatIsAskedForInTheFixedOrder) {
  InventoryCopy all;
  all.systems.hosts = {{"h1", "left", "d", "u", "v", "m", 2, {"vm1"}}};
  all.systems.machines = {
      {"vm1", "one", "d", "u", "guest", "name", "ip", "path", "poweredOn", 2, "h1"},
      {"vm2", "two", "", "", "", "", "", "", "suspended", 15, std::nullopt}};
  all.authorization.privileges = {{"P.View", "View", {"7"}}};
  all.authorization.roles = {{"7", "Op", "Operator", "Runs", "UserDefined", {"P.View"}, {"ann"}}};
  all.authorization.identities = {{"ann", {"7"}}};
  for (const Row& row : ReadRows(KECPP_TEST_DATA "/json.txt")) {
    Options options;
    const char* const command[] = {"kecpp-inventory", "--show", row[0].c_str()};
    ASSERT_FALSE(ParseOptions(3, command, options));
    EXPECT_EQ(ToJson(all, options.lists), row[1]);
  }
}

TEST(InventoryJson, ReplacesWhatIsNotUtf8AndKeepsEntities) {
  InventoryCopy all;
  all.systems.hosts.resize(1);
  Host& host = all.systems.hosts.front();
  host.elementName =
      "a\xff"
      "b";
  host.vendor = "cut \xe2\x82";
  host.model = "\xed\xa0\x80";  // a surrogate
  host.description = "R&amp;D \"caf\xc3\xa9\"\n";
  const auto parsed = nlohmann::json::parse(ToJson(all, {true}))["hosts"][0];
  EXPECT_EQ(parsed["ElementName"],
            "a\xef\xbf\xbd"
            "b");
  EXPECT_EQ(parsed["Vendor"], "cut \xef\xbf\xbd");
  EXPECT_NE(parsed["Model"].get<std::string>().find("\xef\xbf\xbd"), std::string::npos);
  EXPECT_EQ(parsed["Description"], "R&amp;D \"caf\xc3\xa9\"\n");
}

}  // namespace
}  // namespace tools::inventory
