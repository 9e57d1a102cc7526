// SPDX-License-Identifier: MIT
#include "agent/InventoryJson.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace inventory {
namespace {

Lists Systems() {
  Lists lists;
  lists.hosts = lists.machines = true;
  return lists;
}

TEST(InventoryJson, WritesEveryFieldInTheFixedOrder) {
  Inventory all;
  all.systems.hosts = {{"h1", "left", "d", "u", "v", "m", 2, {"vm1"}}};
  all.systems.machines = {
      {"vm1", "one", "d", "u", "guest", "name", "ip", "path", "poweredOn", 2, "h1"},
      {"vm2", "two", "", "", "", "", "", "", "suspended", 15, std::nullopt}};
  EXPECT_EQ(ToJson(all, Systems()),
            R"({"hosts":[{"Name":"h1","ElementName":"left","Description":"d","UUID":"u",)"
            R"("Vendor":"v","Model":"m","OperationalStatus":2,"machines":["vm1"]}],)"
            R"("machines":[{"Name":"vm1","ElementName":"one","Description":"d","UUID":"u",)"
            R"("GuestFullName":"guest","GuestHostName":"name","GuestIPAddress":"ip",)"
            R"("VMPathName":"path","PowerState":"poweredOn","OperationalStatus":2,"host":"h1"},)"
            R"({"Name":"vm2","ElementName":"two","Description":"","UUID":"","GuestFullName":"",)"
            R"("GuestHostName":"","GuestIPAddress":"","VMPathName":"","PowerState":"suspended",)"
            R"("OperationalStatus":15,"host":null}]})");
}

TEST(InventoryJson, WritesAuthorizationAfterMachinesAndOnlyWhatIsAskedFor) {
  Inventory all;
  all.authorization.privileges = {{"P.View", "View", {"7"}}};
  all.authorization.roles = {{"7", "Op", "Operator", "Runs", "UserDefined", {"P.View"}, {"ann"}}};
  all.authorization.identities = {{"ann", {"7"}}};
  Lists lists;
  lists.machines = lists.privileges = lists.roles = lists.identities = true;
  EXPECT_EQ(ToJson(all, lists),
            R"({"machines":[],"privileges":[{"InstanceID":"P.View","ElementName":"View",)"
            R"("roles":["7"]}],"roles":[{"Name":"7","ElementName":"Op","Caption":"Operator",)"
            R"("Description":"Runs","RoleType":"UserDefined","privileges":["P.View"],)"
            R"("identities":["ann"]}],"identities":[{"InstanceID":"ann","roles":["7"]}]})");
}

TEST(InventoryJson, ReplacesWhatIsNotUtf8AndKeepsEntities) {
  Inventory all;
  all.systems.hosts.resize(1);
  Host& host = all.systems.hosts.front();
  host.elementName =
      "a\xff"
      "b";
  host.vendor = "cut \xe2\x82";
  host.model = "\xed\xa0\x80";  // a surrogate
  host.description = "R&amp;D \"caf\xc3\xa9\"\n";
  const auto parsed = nlohmann::json::parse(ToJson(all, Systems()))["hosts"][0];
  EXPECT_EQ(parsed["ElementName"],
            "a\xef\xbf\xbd"
            "b");
  EXPECT_EQ(parsed["Vendor"], "cut \xef\xbf\xbd");
  EXPECT_NE(parsed["Model"].get<std::string>().find("\xef\xbf\xbd"), std::string::npos);
  EXPECT_EQ(parsed["Description"], "R&amp;D \"caf\xc3\xa9\"\n");
}

}  // namespace
}  // namespace inventory
