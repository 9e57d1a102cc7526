// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "fleet/Base64.h"
#include "fleet/Documents.h"
#include "fleet/EtcdClient.h"
#include "fleet/Keys.h"
#include "tools/common/ObjectJson.h"

namespace kecpp::fleet {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

std::string AllBytes() {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  return all;
}

TEST(FleetLayout, BringsAnyNameAndKeyBack) {
  const std::string any = AllBytes();
  EXPECT_EQ(ObjectsOf("a/b c") + ObjectPart(Kind::machine, "vm-1"), "inv/a%2Fb%20c/machine/vm-1");
  for (const std::string& text : {any, std::string(), std::string("vm-1"), std::string(1, '\0')}) {
    const auto name = ParseObjectKey(ObjectsOf(any) + ObjectPart(Kind::role, text));
    ASSERT_TRUE(name);
    EXPECT_EQ(name->site, any);
    EXPECT_EQ(name->object.kind, Kind::role);
    EXPECT_EQ(name->object.key, text);
    std::string encoded;
    AppendBase64(encoded, text);
    EXPECT_EQ(DecodeBase64(encoded), text);
  }
  // There is one text for each name: a second one would be a second object.
  for (const char* wrong :
       {"inv/s/machine/a b", "inv/s/machine/%2f", "inv/s/machine/%41", "inv/s/machine/a%2",
        "inv/s/machine", "inv/s/cat/a", "site/s/host/a", "inv/s/host/a/b"}) {
    EXPECT_FALSE(ParseObjectKey(wrong)) << wrong;
  }
  for (const char* wrong : {"YQ=", "YQ", "Y===", "Y Q=", "=aaa", "YQ==YQ=="}) {
    EXPECT_FALSE(DecodeBase64(wrong)) << wrong;
  }
}

TEST(FleetLayout, DocumentsHaveWhatEventsHaveButDerivedLinks) {
  Machine machine{"vm-1",      "web & \"1\"",         "d", "u",     "g", "h", "1.2.3.4", "/p",
                  "suspended", PowerState::suspended, 15,  "host-1"};
  const std::pair<Object, const char*> rows[] = {
      {Host{"host-1", "h", "d", "u", "v", "m", 3, {"vm-1"}}, "machines"},
      {machine, nullptr},
      {Machine{"vm-2", "", "", "", "", "", "", "", "odd", PowerState::unknown, 0, {}}, nullptr},
      {Role{"-1", "n", "c", "d", "t", {"p1", "p2"}, {"root"}}, "identities"},
      {Privilege{"p1", "n", {"-1"}}, "roles"},
      {Identity{"root", {"-1"}}, nullptr}};
  for (const auto& [object, derived] : rows) {
    const auto kind = static_cast<Kind>(object.index());
    const std::string text = ObjectText("s", object).Whole(7, "2026-11-22T18:24:00.123Z");
    json shown = json::parse(tools::ObjectJson(tools::KindRow(kind), object).dump());
    if (derived != nullptr) shown.erase(derived);
    EXPECT_EQ(json::parse(text)["properties"], shown);
    EXPECT_EQ(json::parse(text)["epoch"], 7);
    EXPECT_EQ(LastingPart(text), ObjectText("s", object).Lasting());
    const std::string key = std::visit([](const auto& copy) { return copy.key; }, object);
    std::int64_t changed = 0;
    const auto read = ReadObject(kind, key, text, &changed);
    ASSERT_TRUE(read);
    EXPECT_EQ(changed, 1795371840123);
    EXPECT_EQ(ObjectText("s", *read).Lasting(), ObjectText("s", object).Lasting());
  }
  const auto read = ReadObject(Kind::machine, "vm-1", ObjectText("s", machine).Lasting());
  EXPECT_EQ(std::get<Machine>(*read), machine);
}

// What is too long, broken, hostile or of a later version.
TEST(FleetLayout, BoundsDocumentsAndReadsForeignOnes) {
  Role role{"-1", "n", "c", "d", "t", {}, {}};
  role.privileges.assign(10000, "privilege");
  const ObjectText text("s", role);
  EXPECT_TRUE(text.IsTooLong());
  EXPECT_LT(text.Whole(1, "t").size(), 300U);
  EXPECT_EQ(std::get<Role>(*ReadObject(Kind::role, "-1", text.Whole(1, "t"))).key, "-1");

  const Machine odd{"\xff", "\xfe", "", "", "", "", "", "", "", PowerState::unknown, 0, {}};
  const auto read = ReadObject(Kind::machine, "\xff", ObjectText("\xfd", odd).Lasting());
  EXPECT_EQ(std::get<Machine>(*read).key, "\xff");
  EXPECT_EQ(std::get<Machine>(*read).name, "\xEF\xBF\xBD");

  const auto known = ReadObject(
      Kind::machine, "k",
      R"({"schema":1,"new":[1],"properties":{"ElementName":"n","UUID":5,"New":{},"host":["x"]}})");
  ASSERT_TRUE(known);
  EXPECT_EQ(std::get<Machine>(*known).name, "n");
  EXPECT_EQ(std::get<Machine>(*known).uuid, "");
  EXPECT_FALSE(std::get<Machine>(*known).host);
  const std::string deep = R"({"schema":1,"properties":)" + std::string(30000, '[');
  for (const std::string& wrong :
       {std::string(), std::string("[]"), std::string(R"({"schema":2,"properties":{}})"),
        std::string(R"({"schema":1,"properties":[]})"), deep,
        R"({"schema":1,"p":")" + std::string(kLongestDocument, 'a') + "\"}"}) {
    EXPECT_FALSE(ReadObject(Kind::machine, "k", wrong));
  }
  EXPECT_EQ(LastingPart(deep), "");
}

TEST(FleetLayout, ReadsMembers) {
  EXPECT_THAT(ParseMembers("http://a:1,https://[::1]:2/"),
              ElementsAre("http://a:1", "https://[::1]:2"));
  for (const char* wrong :
       {"", "a:1", "ftp://a", "http://", "http://a,", "http://a/b", "http://u:p@a", "http://a b"}) {
    EXPECT_THAT(ParseMembers(wrong), IsEmpty()) << wrong;
  }
}

}  // namespace
}  // namespace kecpp::fleet
