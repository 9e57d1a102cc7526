// SPDX-License-Identifier: MIT
//
// What a reader of a fleet finds in its cluster, line by line:
//
//   +KEY VALUE   a key that was put
//   -KEY         one that was removed
//   =            everything is read again: what does not come until the next such line has gone
//   {...}        a line of a watch, or an answer to a transaction
//
// Nothing crashes. Links agree on both sides, a follower's entries fit what it was given before and
// lead to what is there in the end, what was read and written is read as the same again, and there
// is one text for each key.
#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <tuple>

#include "fleet/Base64.h"
#include "fleet/Documents.h"
#include "fleet/Keys.h"
#include "fleet/Watch.h"
#include "fuzz/Fuzz.h"
#include "inventory/FleetFollowerImpl.h"
#include "inventory/FleetScope.h"
#include "inventory/FleetStore.h"

namespace {

using namespace kecpp;
using namespace kecpp::fleet;

constexpr Kind KINDS[] = {Kind::host, Kind::machine, Kind::role, Kind::privilege, Kind::identity};

bool Has(const std::vector<std::string>& keys, const std::string& key) {
  return std::find(keys.begin(), keys.end(), key) != keys.end();
}

std::vector<std::string> LinksOf(const Object& object) {
  if (const auto* machine = std::get_if<Machine>(&object)) {
    return machine->host ? std::vector<std::string>{*machine->host} : std::vector<std::string>();
  }
  if (const auto* role = std::get_if<Role>(&object)) return role->privileges;
  if (const auto* identity = std::get_if<Identity>(&object)) return identity->roles;
  return {};
}
std::vector<std::string> DerivedOf(const Object& object) {
  if (const auto* host = std::get_if<Host>(&object)) return host->machines;
  if (const auto* role = std::get_if<Role>(&object)) return role->identities;
  if (const auto* privilege = std::get_if<Privilege>(&object)) return privilege->roles;
  return {};
}
// Where the links of a kind lead, or come from.
Kind OtherEnd(Kind kind, bool isDerived) {
  if (isDerived)
    return kind == Kind::host ? Kind::machine : kind == Kind::role ? Kind::identity : Kind::role;
  return kind == Kind::machine ? Kind::host : kind == Kind::role ? Kind::privilege : Kind::role;
}

class Reader {
 public:
  Reader() {
    store->Add(follower);
    store->BeginReading();
    store->EndReading();
  }

  void Take(const std::vector<WatchEvent>& events) {
    std::vector<FleetNews> news;
    for (const WatchEvent& event : events) {
      auto one = scope.Read(event, [](const std::string&, const char*) {});
      if (one) news.push_back(std::move(*one));
    }
    store->Apply(std::move(news));
  }

  void ReadAgain() {
    if (isReading) store->EndReading();
    if (!isReading) store->BeginReading();
    isReading = !isReading;
  }

  // A few at a time, so that entries of one object become one.
  void Follow(std::size_t most) {
    for (const FleetChange& change : follower->Next(most)) {
      const Place place{change.site, change.kind ? static_cast<int>(*change.kind) : -1, change.key};
      FUZZ_CHECK((known.count(place) == 0) == (change.type == Change::Type::added));
      if (change.type == Change::Type::removed) known.erase(place);
      if (change.type == Change::Type::added) known.insert(place);
    }
  }

  void Check() {
    while (follower->Wait(std::chrono::milliseconds(0))) Follow(1000);
    std::set<Place> there;
    for (const Site& site : store->Sites()) {
      there.insert({site.name, -1, ""});
      for (const Kind kind : KINDS) {
        for (const Object& object : store->Next(site.name, kind, {}, 100000)) {
          there.insert({site.name, static_cast<int>(kind), KeyOf(object)});
          CheckLinks(site.name, kind, object);
          CheckText(kind, object);
        }
      }
    }
    FUZZ_CHECK(there == known);
  }

 private:
  using Place = std::tuple<std::string, int, std::string>;

  static std::string KeyOf(const Object& object) {
    return std::visit([](const auto& one) { return one.key; }, object);
  }

  void CheckLinks(const std::string& site, Kind kind, const Object& object) const {
    const std::string key = KeyOf(object);
    for (const std::string& end : LinksOf(object)) {
      const auto other = store->Find(site, OtherEnd(kind, false), end);
      FUZZ_CHECK(!other || Has(DerivedOf(*other), key));
    }
    for (const std::string& end : DerivedOf(object)) {
      const auto other = store->Find(site, OtherEnd(kind, true), end);
      FUZZ_CHECK(other && Has(LinksOf(*other), key));
    }
  }

  static void CheckText(Kind kind, const Object& object) {
    const ObjectText text("s", object);
    FUZZ_CHECK(text.Whole(1, TimeText(0)).size() <= kLongestDocument);
    const std::string whole = text.Whole(1, TimeText(0));
    const auto read = ReadObject(kind, KeyOf(object), whole);
    FUZZ_CHECK(read && LastingPart(whole) == text.Lasting());
    if (!text.IsTooLong()) FUZZ_CHECK(ObjectText("s", *read).Lasting() == text.Lasting());
  }

  const FleetScope scope{""};
  const std::shared_ptr<FleetStore> store = std::make_shared<FleetStore>();
  const std::shared_ptr<FleetFollower::Impl> follower =
      std::make_shared<FleetFollower::Impl>(store);
  bool isReading = false;
  std::set<Place> known;
};

void CheckTexts(const std::string& line) {
  if (const auto raw = DecodePart(line)) FUZZ_CHECK(EncodePart(*raw) == line);
  FUZZ_CHECK(DecodePart(EncodePart(line)) == line);
  std::string encoded;
  AppendBase64(encoded, line);
  FUZZ_CHECK(DecodeBase64(encoded) == line);
  DecodeBase64(line);
  ReadEpoch(line);
  ReadSite(line);
  ParseMembers(line);
}

void TakeLine(const std::string& line, Watch& watch, Reader& reader) {
  const std::size_t space = std::min(line.find(' '), line.size());
  if (line[0] == '+') {
    const std::string value = space < line.size() ? line.substr(space + 1) : std::string();
    CheckTexts(value);
    return reader.Take({{false, {line.substr(1, space - 1), value, 1}}});
  }
  if (line[0] == '-') return reader.Take({{true, {line.substr(1), "", 1}}});
  if (line[0] == '=') return reader.ReadAgain();
  CheckTexts(line);
  const nlohmann::json json = nlohmann::json::parse(line, nullptr, false);
  if (!json.is_object()) return;
  try {
    watch.TakeLine(json, [&](std::vector<WatchEvent>&& events) { reader.Take(events); });
  } catch (const EtcdError&) {
  }
  try {
    ReadResult(json);
  } catch (const EtcdError&) {
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  Watch watch({{"inv/", "inv0"}, {"site/", "site0"}, {"live/", "live0"}}, {"7", 1});
  Reader reader;
  while (!input.Empty()) {
    const std::string line = input.Until('\n');
    if (!line.empty()) TakeLine(line, watch, reader);
    reader.Follow(line.size() % 3);
  }
  reader.Check();
  return 0;
}
