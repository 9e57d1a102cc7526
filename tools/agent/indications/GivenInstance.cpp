// SPDX-License-Identifier: MIT
#include "tools/agent/indications/GivenInstance.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <set>

#include "tools/agent/Errors.h"
#include "tools/common/Split.h"
#include "tools/common/Utf8.h"

namespace tools::agent {
namespace {

constexpr std::size_t MOST_TEXT = 4096;
constexpr std::size_t MOST_ITEMS = 16;
constexpr std::size_t MOST_PROPERTIES = 64;

struct Rule {
  const char* property;
  bool isServers = false;  // what a client gives is passed over
  Changes changes = Changes::Never;
  const char* standard = nullptr;  // where nothing is given
  const char* allowed = nullptr;   // values, with blanks between; null: all
};

constexpr Rule NAMED[] = {
    {"SystemCreationClassName", true, Changes::Never, "CIM_ComputerSystem"},
    {"SystemName", true},
    {CREATION_CLASS_NAME, true},
    {"Name"},
    {"Caption", false, Changes::Always},
    {"Description", false, Changes::Always},
    {"ElementName", false, Changes::Always},
};
constexpr Rule FILTER[] = {
    {"SourceNamespace", false, Changes::Unused},
    {"SourceNamespaces", false, Changes::Unused},
    {"Query", false, Changes::Unused},
    {"QueryLanguage", false, Changes::Unused},
    {"IndividualSubscriptionSupported", false, Changes::Never, "TRUE", "TRUE"},
};
constexpr Rule DESTINATION[] = {
    {"Destination", false, Changes::Unused},
    {"PersistenceType", false, Changes::Unused, "2", "2 3"},
    {"Protocol", false, Changes::Never, "2", "2"},
};
constexpr Rule SUBSCRIPTION[] = {
    {"Filter"},
    {"Handler"},
    {"OnFatalErrorPolicy", false, Changes::Never, "2", "2"},
    {"SubscriptionState", false, Changes::Always, "2", "2 4"},
    {"RepeatNotificationPolicy", false, Changes::Never, "2", "2"},
    {"SubscriptionDuration", false, Changes::Always},
    {"SubscriptionInfo", false, Changes::Always},
    {"SubscriptionStartTime", true},
    {"TimeOfLastStateChange", true},
};

std::vector<Rule> RulesOf(const ClassRow& type) {
  const std::string_view name = type.name;
  std::vector<Rule> rules;
  if (name == SUBSCRIPTION_CLASS) return {std::begin(SUBSCRIPTION), std::end(SUBSCRIPTION)};
  if (name == FILTER_CLASS) rules.assign(std::begin(FILTER), std::end(FILTER));
  if (name == DESTINATION_CLASS) rules.assign(std::begin(DESTINATION), std::end(DESTINATION));
  if (!rules.empty()) rules.insert(rules.begin(), std::begin(NAMED), std::end(NAMED));
  return rules;
}

[[noreturn]] void Refuse(const std::string& text) {
  throw OperationError(Status::InvalidParameter, text);
}

bool IsText(std::string_view text) {
  while (!text.empty()) {
    const auto first = static_cast<unsigned char>(text.front());
    const bool isControl = (first < ' ' && first != '\t' && first != '\n' && first != '\r');
    const std::size_t length = SequenceLength(text);
    if (isControl || length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

template <class Number>
bool IsNumber(const std::string& text) {
  Number number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

bool IsOfType(CimType type, const std::string& value) {
  switch (type) {
    case CimType::UInt16:
      return IsNumber<std::uint16_t>(value);
    case CimType::UInt64:
      return IsNumber<std::uint64_t>(value);
    case CimType::Boolean:
      return SameName(value, "TRUE") || SameName(value, "FALSE");
    default:
      return value.size() <= MOST_TEXT && IsText(value);
  }
}

bool IsAllowed(const Rule& rule, const std::string& value) {
  if (!rule.allowed) return true;
  const auto values = Split(rule.allowed, ' ');
  return std::any_of(values.begin(), values.end(),
                     [&](std::string_view one) { return SameName(one, value); });
}

void CheckValue(const GivenProperty& given, const PropertyRow& row, const Rule& rule) {
  const bool isReference = row.type == CimType::Reference;
  if (isReference != given.type.empty() || given.isArray != row.isArray ||
      (!isReference && !SameName(given.type, TypeName(row.type)))) {
    Refuse(given.name + " is of another type");
  }
  if (given.values.size() > MOST_ITEMS) Refuse(given.name + " has too many items");
  for (const std::string& value : given.values) {
    if (!IsOfType(row.type, value)) Refuse(given.name + " has no such value");
    if (!IsAllowed(rule, value)) Refuse(given.name + " is served with " + rule.allowed + " only");
  }
}

const PropertyRow& RowOf(const ClassRow& type, const std::string& name) {
  for (const ClassProperty& property : PropertiesOf(type)) {
    if (SameName(property.row->name, name)) return *property.row;
  }
  Refuse(std::string(type.name) + " has no property " + name.substr(0, MOST_TEXT));
}

const Rule* FindRule(const std::vector<Rule>& rules, std::string_view property) {
  for (const Rule& rule : rules) {
    if (SameName(rule.property, property)) return &rule;
  }
  return nullptr;
}

void SetValue(StoredInstance& instance, const PropertyRow& row, const GivenProperty& given,
              const Resolve& resolve) {
  if (row.type == CimType::Reference) {
    instance.Set(row.name, resolve(given.reference));
  } else if (row.type == CimType::Boolean) {
    instance.Set(row.name, SameName(given.values.front(), "TRUE") ? "TRUE" : "FALSE");
  } else {
    instance.Set(row.name, given.values);
  }
}

}  // namespace

KeyBinding NameKey(const std::string& name) {
  KeyBinding key;
  key.name = "Name";
  key.value = name;
  return key;
}

bool IsGiven(const ClassRow& type) {
  return !RulesOf(type).empty();
}

StoredInstance MakeInstance(const ClassRow& type, const std::vector<GivenProperty>& given,
                            Author author, const Resolve& resolve) {
  const std::vector<Rule> rules = RulesOf(type);
  StoredInstance made(type);
  for (const Rule& rule : rules) {
    if (rule.standard) made.Set(rule.property, std::string_view(rule.standard));
  }
  if (given.size() > MOST_PROPERTIES) Refuse("there are too many properties");
  std::set<const PropertyRow*> seen;
  for (const GivenProperty& property : given) {
    const PropertyRow& row = RowOf(type, property.name);
    if (!seen.insert(&row).second) Refuse(property.name + " comes twice");
    const Rule* rule = FindRule(rules, row.name);
    if (property.isNull || (rule && rule->isServers && author == Author::Client)) continue;
    if (!rule) Refuse(property.name + " is not kept");
    CheckValue(property, row, *rule);
    SetValue(made, row, property, resolve);
  }
  return made;
}

std::vector<GivenProperty> PropertiesGiven(const StoredInstance& instance) {
  std::vector<GivenProperty> all;
  for (std::size_t i = 0; i < instance.Properties().size(); ++i) {
    const PropertyRow& row = *instance.Properties()[i].row;
    const auto& value = instance.Value(i);
    if (!value) continue;
    GivenProperty given;
    given.name = row.name;
    given.isNull = false;
    given.isArray = row.isArray;
    given.values = value->items;
    if (value->target) {
      given.reference.isReference = true;
      given.reference.name = row.name;
      given.reference.referenceClass = value->target->Type().name;
      given.reference.referenceKeys = {NameKey(TextOf(*value->target, "Name"))};
    } else {
      given.type = TypeName(row.type);
    }
    all.push_back(std::move(given));
  }
  return all;
}

Changes ChangesOf(const ClassRow& type, std::string_view property) {
  const std::vector<Rule> rules = RulesOf(type);
  const Rule* rule = FindRule(rules, property);
  return rule ? rule->changes : Changes::Never;
}

std::string TextOf(const StoredInstance& instance, std::string_view property) {
  for (std::size_t i = 0; i < instance.Properties().size(); ++i) {
    const auto& value = instance.Value(i);
    if (value && SameName(instance.Properties()[i].row->name, property)) {
      return value->items.empty() ? "" : value->items.front();
    }
  }
  return {};
}

}  // namespace tools::agent
