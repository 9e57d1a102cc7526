// SPDX-License-Identifier: MIT
#include "fleet/Documents.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <limits>
#include <nlohmann/json.hpp>
#include <tuple>
#include <utility>

#include "fleet/Keys.h"

namespace kecpp::fleet {
namespace {

using Json = nlohmann::ordered_json;

// The properties of a kind: names, and where their values are. A name is the one that
// kecpp-inventory prints.
template <class Object, class Value>
using Field = std::pair<const char*, Value Object::*>;

template <class Object, class... Values>
constexpr auto Table(Field<Object, Values>... fields) {
  return std::make_tuple(fields...);
}
template <class Object, class Value>
constexpr Field<Object, Value> Named(const char* name, Value Object::*value) {
  return {name, value};
}

constexpr auto FieldsOf(const Host*) {
  return Table(Named("Name", &Host::key), Named("ElementName", &Host::name),
               Named("Description", &Host::description), Named("UUID", &Host::uuid),
               Named("Vendor", &Host::vendor), Named("Model", &Host::model),
               Named("OperationalStatus", &Host::operationalStatus));
}
constexpr auto FieldsOf(const Machine*) {
  return Table(Named("Name", &Machine::key), Named("ElementName", &Machine::name),
               Named("Description", &Machine::description), Named("UUID", &Machine::uuid),
               Named("GuestFullName", &Machine::guestFullName),
               Named("GuestHostName", &Machine::guestHostName),
               Named("GuestIPAddress", &Machine::guestIPAddress),
               Named("VMPathName", &Machine::path), Named("PowerState", &Machine::powerStateText),
               Named("OperationalStatus", &Machine::operationalStatus),
               Named("host", &Machine::host));
}
constexpr auto FieldsOf(const Role*) {
  return Table(Named("Name", &Role::key), Named("ElementName", &Role::name),
               Named("Caption", &Role::caption), Named("Description", &Role::description),
               Named("RoleType", &Role::type), Named("privileges", &Role::privileges));
}
constexpr auto FieldsOf(const Privilege*) {
  return Table(Named("InstanceID", &Privilege::key), Named("ElementName", &Privilege::name));
}
constexpr auto FieldsOf(const Identity*) {
  return Table(Named("InstanceID", &Identity::key), Named("roles", &Identity::roles));
}

template <class Object, class Use>
void ForEachField(Use use) {
  std::apply([&](const auto&... fields) { (use(fields.first, fields.second), ...); },
             FieldsOf(static_cast<const Object*>(nullptr)));
}

// A value of another type than its property has is left as it was.
void Read(const Json& from, std::string& to) {
  if (from.is_string()) to = from.get<std::string>();
}
void Read(const Json& from, unsigned& to) {
  constexpr std::uint64_t kMost = std::numeric_limits<unsigned>::max();
  const std::uint64_t number = from.is_number_unsigned() ? from.get<std::uint64_t>() : kMost + 1;
  if (number <= kMost) to = static_cast<unsigned>(number);
}
void Read(const Json& from, std::optional<std::string>& to) {
  if (from.is_string()) to = from.get<std::string>();
}
void Read(const Json& from, std::vector<std::string>& to) {
  if (!from.is_array()) return;
  for (const Json& item : from) {
    if (item.is_string()) to.push_back(item.get<std::string>());
  }
}

std::string Dump(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// Most texts are themselves in JSON. The others are left to the JSON library.
void Append(std::string& out, std::string_view text) {
  const bool isPlain = std::all_of(text.begin(), text.end(), [](char c) {
    return c >= ' ' && c < '\x7f' && c != '"' && c != '\\';
  });
  if (!isPlain) {
    out += Dump(text);
    return;
  }
  out += '"';
  out += text;
  out += '"';
}
void Append(std::string& out, unsigned number) {
  out += std::to_string(number);
}
void Append(std::string& out, const std::optional<std::string>& text) {
  if (text) return Append(out, std::string_view(*text));
  out += "null";
}
void Append(std::string& out, const std::vector<std::string>& list) {
  out += '[';
  for (const std::string& item : list) {
    if (&item != &list.front()) out += ',';
    Append(out, std::string_view(item));
  }
  out += ']';
}
void Append(std::string& out, const std::string& text) {
  Append(out, std::string_view(text));
}

std::string Properties(const Object& object) {
  std::string properties = "{";
  std::visit(
      [&](const auto& copy) {
        ForEachField<std::decay_t<decltype(copy)>>([&](const char* name, auto field) {
          if (properties.size() > 1) properties += ',';
          ((properties += '"') += name) += "\":";
          Append(properties, copy.*field);
        });
      },
      object);
  return properties += '}';
}

// Writing a document again takes stack for each level of it, so a hostile one is not even parsed.
bool IsFlat(std::string_view text) {
  constexpr int kDeepest = 8;
  int depth = 0;
  bool isText = false;
  for (std::size_t at = 0; at < text.size() && depth <= kDeepest; ++at) {
    const char c = text[at];
    if (isText && c == '\\') {
      ++at;
    } else if (c == '"') {
      isText = !isText;
    } else if (!isText) {
      depth += (c == '[' || c == '{') - (c == ']' || c == '}');
    }
  }
  return depth <= kDeepest;
}

// Null for what is no document of this schema.
Json Parse(std::string_view text) {
  if (text.size() > kLongestDocument || !IsFlat(text)) return nullptr;
  Json json = Json::parse(text, nullptr, false);
  if (!json.is_object() || !json.contains("schema") || json["schema"] != kSchema) return nullptr;
  return json;
}

std::string TextOf(const Json& json, const char* name) {
  const auto found = json.find(name);
  return found != json.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::uint64_t NumberOf(const Json& json, const char* name) {
  const auto found = json.find(name);
  return found != json.end() && found->is_number_unsigned() ? found->get<std::uint64_t>() : 0;
}

template <class Object>
Object ReadAs(const std::string& key, const Json& properties) {
  Object object;
  ForEachField<Object>([&](const char* name, auto field) {
    const auto found = properties.find(name);
    if (found != properties.end()) Read(*found, object.*field);
  });
  object.key = key;  // any bytes: the document has them only if they are UTF-8
  return object;
}

PowerState PowerStateOf(std::string_view word) {
  if (word == "poweredOn") return PowerState::on;
  if (word == "poweredOff") return PowerState::off;
  return word == "suspended" ? PowerState::suspended : PowerState::unknown;
}

Machine ReadMachine(const std::string& key, const Json& properties) {
  auto machine = ReadAs<Machine>(key, properties);
  machine.powerState = PowerStateOf(machine.powerStateText);
  return machine;
}

}  // namespace

ObjectText::ObjectText(std::string_view site, const Object& object) {
  const std::string& key =
      std::visit([](const auto& copy) -> const std::string& { return copy.key; }, object);
  head = "{\"schema\":" + std::to_string(kSchema) + ",\"site\":";
  Append(head, site);
  ((head += ",\"class\":\"") += NameOf(static_cast<Kind>(object.index()))) += "\",\"key\":";
  Append(head, key);
  head += ',';
  const std::string properties = Properties(object);
  constexpr std::size_t kRoom = 128;  // of epoch, time and names
  isTooLong = head.size() + properties.size() + kRoom > kLongestDocument;
  rest = isTooLong ? "\"omitted\":" + std::to_string(properties.size()) + '}'
                   : "\"properties\":" + properties + '}';
}

std::string ObjectText::Whole(std::uint64_t epoch, std::string_view changed) const {
  std::string whole;
  whole.reserve(head.size() + rest.size() + 80);
  whole += head;
  whole += "\"epoch\":";
  whole += std::to_string(epoch);
  whole += ",\"changed\":\"";
  whole += changed;
  whole += "\",";
  return whole += rest;
}

std::string LastingPart(std::string_view document) {
  Json json = Parse(document);
  if (!json.is_object()) return {};
  json.erase("epoch");
  json.erase("changed");
  return Dump(json);
}

std::optional<Object> ReadObject(Kind kind, const std::string& key, std::string_view document,
                                 std::int64_t* changed) {
  const Json json = Parse(document);
  if (!json.is_object()) return {};
  if (changed != nullptr) *changed = ReadTime(TextOf(json, "changed")).value_or(0);
  const auto found = json.find("properties");
  const Json properties = found != json.end() ? *found : Json::object();
  if (!properties.is_object()) return {};
  switch (kind) {
    case Kind::host:
      return ReadAs<Host>(key, properties);
    case Kind::machine:
      return ReadMachine(key, properties);
    case Kind::role:
      return ReadAs<Role>(key, properties);
    case Kind::privilege:
      return ReadAs<Privilege>(key, properties);
    default:
      return ReadAs<Identity>(key, properties);
  }
}

std::string ToText(const EpochDocument& document, std::string_view since) {
  return Dump({{"schema", kSchema},
               {"epoch", document.epoch},
               {"publisher", document.publisher},
               {"since", since}});
}

std::optional<EpochDocument> ReadEpoch(std::string_view text) {
  const Json json = Parse(text);
  if (!json.is_object()) return {};
  return EpochDocument{NumberOf(json, "epoch"), TextOf(json, "publisher")};
}

std::string ToText(const SiteDocument& document) {
  return Dump({{"schema", kSchema},
               {"agent", document.agent},
               {"epoch", document.epoch},
               {"state", document.isComplete ? "complete" : "syncing"},
               {"objects", document.objects},
               {"agreed", document.agreed.empty() ? Json(nullptr) : Json(document.agreed)},
               {"daemon", document.isConnected ? "connected" : "lost"}});
}

std::optional<SiteDocument> ReadSite(std::string_view text) {
  const Json json = Parse(text);
  if (!json.is_object()) return {};
  SiteDocument document;
  document.epoch = NumberOf(json, "epoch");
  document.agent = TextOf(json, "agent");
  document.isComplete = TextOf(json, "state") == "complete";
  document.isConnected = TextOf(json, "daemon") == "connected";
  document.objects = NumberOf(json, "objects");
  document.agreed = TextOf(json, "agreed");
  return document;
}

std::string TimeText(std::int64_t milliseconds) {
  const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[40];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  const std::string thousandths = std::to_string(1000 + milliseconds % 1000);
  return std::string(text, length) + '.' + thousandths.substr(1) + 'Z';
}

std::optional<std::int64_t> ReadTime(const std::string& text) {
  std::tm parts{};
  const char* end = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
  if (end == nullptr || *end != '.' || text.size() != 24 || text.back() != 'Z') return {};
  int thousandths = 0;
  for (const char c : std::string_view(text).substr(20, 3)) {
    if (c < '0' || c > '9') return {};
    thousandths = 10 * thousandths + (c - '0');
  }
  // A system clock's nanoseconds since 1970 have 64 bits: from 1678 to 2262.
  constexpr std::int64_t kFarthest = 9000000000;
  const auto seconds = static_cast<std::int64_t>(timegm(&parts));
  if (seconds > kFarthest || seconds < -kFarthest) return {};
  return seconds * 1000 + thousandths;
}

std::int64_t NowMilliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace kecpp::fleet
