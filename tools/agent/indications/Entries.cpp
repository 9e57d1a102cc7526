// SPDX-License-Identifier: MIT
#include "tools/agent/indications/Entries.h"

#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <utility>

#include "tools/agent/Errors.h"

namespace tools::agent {
namespace {

using Clock = std::chrono::system_clock;

constexpr const char* ENABLED = "2";

struct Bound {
  const char* className;
  std::size_t most;
};

constexpr Bound BOUNDS[] = {{FILTER_CLASS, MOST_FILTERS},
                            {DESTINATION_CLASS, MOST_DESTINATIONS},
                            {SUBSCRIPTION_CLASS, MOST_SUBSCRIPTIONS}};

[[noreturn]] void Refuse(const std::string& text, Status status = Status::InvalidParameter) {
  throw OperationError(status, text);
}

bool IsA(const Stored& instance, const char* className) {
  return SameName(instance->Type().name, className);
}

std::string RandomText() {
  std::array<unsigned char, 16> bytes = {};
  if (RAND_bytes(bytes.data(), bytes.size()) != 1) Refuse("there is no randomness", Status::Failed);
  std::string text;
  for (const unsigned char byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

const StoredValue* ValueOf(const StoredInstance& instance, std::string_view property) {
  for (std::size_t i = 0; i < instance.Properties().size(); ++i) {
    if (!SameName(instance.Properties()[i].row->name, property)) continue;
    return instance.Value(i) ? &*instance.Value(i) : nullptr;
  }
  return nullptr;
}

Stored TargetOf(const StoredInstance& instance, std::string_view property) {
  const StoredValue* value = ValueOf(instance, property);
  return value ? value->target : nullptr;
}

bool IsSame(const StoredValue* one, const StoredValue* other) {
  if (!one || !other) return one == other;
  return one->items == other->items && one->target == other->target;
}

bool HaveSameKeys(const StoredInstance& one, const StoredInstance& other) {
  if (&one.Type() != &other.Type()) return false;
  const auto& all = one.Properties();
  return std::all_of(all.begin(), all.end(), [&](const ClassProperty& property) {
    const char* name = property.row->name;
    return !property.row->isKey || IsSame(ValueOf(one, name), ValueOf(other, name));
  });
}

void Need(const StoredInstance& made, std::initializer_list<const char*> properties) {
  for (const char* property : properties) {
    if (!ValueOf(made, property)) Refuse(std::string(property) + " is missing");
  }
}

// Whether what changes is in the namespaces of a filter.
bool NamesSystems(const StoredInstance& filter) {
  for (const char* property : {"SourceNamespaces", "SourceNamespace"}) {
    const StoredValue* value = ValueOf(filter, property);
    const bool names =
        value && std::any_of(value->items.begin(), value->items.end(), [](const std::string& name) {
          return SameName(name, NAMESPACE_NAME);
        });
    if (names) return true;
  }
  return false;
}

std::vector<GivenProperty>::iterator FindGiven(std::vector<GivenProperty>& properties,
                                               const std::string& name) {
  return std::find_if(properties.begin(), properties.end(),
                      [&](const GivenProperty& property) { return SameName(property.name, name); });
}

// The instance's properties, with those that are given in the place of the former ones. A listed
// one that is not given, and a null one, gets what it has where nothing is given.
std::vector<GivenProperty> Merge(const StoredInstance& instance, std::vector<GivenProperty> given,
                                 const std::optional<std::vector<std::string>>& wanted) {
  std::vector<GivenProperty> merged = PropertiesGiven(instance);
  std::vector<std::string> names;
  names.reserve(given.size());
  for (const GivenProperty& property : given) names.push_back(property.name);
  for (const std::string& name : wanted ? *wanted : names) {
    const auto former = FindGiven(merged, name);
    if (former != merged.end()) merged.erase(former);
    const auto next = FindGiven(given, name);
    if (next != given.end()) merged.push_back(std::move(*next));
    if (next != given.end()) given.erase(next);
  }
  return merged;
}

}  // namespace

Entries::Entries(std::string hostName, Stored indicationService, const DeliveryPolicy& sendPolicy,
                 DeliveryCounters& deliveryCounters)
    : host(std::move(hostName)),
      service(std::move(indicationService)),
      policy(sendPolicy),
      counters(deliveryCounters),
      run(RandomText()) {}

// The other keys of filters and destinations are the same for all of them and may be left out.
Stored Entries::Resolve(const KeyBinding& reference) const {
  const auto& keys = reference.referenceKeys;
  const bool isShort = keys.size() == 1 && SameName(keys.front().name, "Name");
  for (const Entry& entry : entries) {
    const StoredInstance& instance = *entry.instance;
    if (instance.IsNamed(reference.referenceClass, keys) ||
        (isShort && IsA(entry.instance, reference.referenceClass.c_str()) &&
         TextOf(instance, "Name") == keys.front().value)) {
      return entry.instance;
    }
  }
  Refuse(reference.name + " leads to nothing");
}

const Entries::Entry* Entries::Find(const Stored& instance) const {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [&](const Entry& entry) { return entry.instance == instance; });
  return found == entries.end() ? nullptr : &*found;
}

// It may have gone since it was found.
const Entries::Entry& Entries::Get(const Stored& instance) const {
  const Entry* entry = Find(instance);
  if (entry) return *entry;
  if (IsGiven(instance->Type())) Refuse("there is no such instance", Status::NotFound);
  Refuse(std::string("instances of ") + instance->Type().name + " are not changed by clients",
         Status::NotSupported);
}

bool Entries::IsUsed(const Stored& instance) const {
  return std::any_of(entries.begin(), entries.end(), [&](const Entry& entry) {
    return TargetOf(*entry.instance, "Filter") == instance ||
           TargetOf(*entry.instance, "Handler") == instance;
  });
}

void Entries::CheckRoom(const ClassRow& type) const {
  for (const Bound& bound : BOUNDS) {
    const auto count = std::count_if(entries.begin(), entries.end(), [&](const Entry& entry) {
      return SameName(type.name, bound.className) && &entry.instance->Type() == &type;
    });
    if (static_cast<std::size_t>(count) < bound.most) continue;
    Refuse("there may be " + std::to_string(bound.most) + " instances of " + type.name,
           Status::Failed);
  }
}

Stored Entries::Create(const ClassRow& type, const std::vector<GivenProperty>& given) {
  return Add(type, given, Author::Client, 0);
}

Stored Entries::Add(const ClassRow& type, const std::vector<GivenProperty>& given, Author author,
                    long long failingSince) {
  if (!IsGiven(type)) {
    Refuse(std::string("instances of ") + type.name + " are not made by clients",
           Status::NotSupported);
  }
  CheckRoom(type);
  StoredInstance instance = MakeInstance(
      type, given, author, [this](const KeyBinding& reference) { return Resolve(reference); });
  if (author == Author::Client) SetServerValues(instance);
  Entry entry = MakeEntry(std::move(instance), author, failingSince);
  for (const Entry& other : entries) {
    if (!HaveSameKeys(*other.instance, *entry.instance)) continue;
    Refuse("there is such an instance", Status::AlreadyExists);
  }
  entries.push_back(std::move(entry));
  return entries.back().instance;
}

void Entries::SetServerValues(StoredInstance& instance) {
  const std::string now = CimTime(Clock::now());
  if (instance.Type().isAssociation) {
    instance.Set("SubscriptionStartTime", now).Set("TimeOfLastStateChange", now);
    return;
  }
  instance.Set("SystemName", host).Set(CREATION_CLASS_NAME, std::string_view(instance.Type().name));
  if (TextOf(instance, "Name").empty()) instance.Set("Name", "kecpp:" + RandomText());
}

Entries::Entry Entries::MakeEntry(StoredInstance instance, Author author, long long failingSince) {
  Entry entry{std::make_shared<const StoredInstance>(std::move(instance)), nullptr, nullptr,
              nullptr};
  if (entry.instance->Type().isAssociation) {
    const auto leadsTo = [&](const char* property, const char* className) {
      const Stored target = TargetOf(*entry.instance, property);
      if (!target) Refuse(std::string(property) + " is missing");
      if (!IsA(target, className)) Refuse(std::string(property) + " is of another class");
    };
    leadsTo("Filter", FILTER_CLASS);
    leadsTo("Handler", DESTINATION_CLASS);
    return entry;
  }
  Need(*entry.instance, {"SystemName", CREATION_CLASS_NAME, "Name"});
  if (IsA(entry.instance, FILTER_CLASS)) MakeFilter(entry);
  if (IsA(entry.instance, DESTINATION_CLASS)) MakeDestination(entry, author, failingSince);
  StoredInstance link(*FindClass("CIM_ServiceAffectsElement"));
  link.Set("AffectedElement", entry.instance).Set("AffectingElement", service);
  entry.link = std::make_shared<const StoredInstance>(std::move(link));
  return entry;
}

void Entries::MakeFilter(Entry& entry) const {
  Need(*entry.instance, {"Query", "QueryLanguage"});
  if (!NamesSystems(*entry.instance)) {
    Refuse(std::string("SourceNamespaces must name ") + NAMESPACE_NAME +
           ": nothing changes elsewhere");
  }
  entry.filter = std::make_shared<const EventFilter>(TextOf(*entry.instance, "QueryLanguage"),
                                                     TextOf(*entry.instance, "Query"));
}

// What is read from the file may name a host that the options do not allow any more: nothing is
// sent there then.
void Entries::MakeDestination(Entry& entry, Author author, long long failingSince) {
  Need(*entry.instance, {"Destination"});
  const auto url = ReadListenerUrl(TextOf(*entry.instance, "Destination"));
  if (!url) Refuse("Destination is no URL of a listener");
  if (author == Author::Client && !policy.hosts.MayName(url->host)) {
    Refuse("--indications-to does not name the host of Destination");
  }
  std::optional<Time> failing;
  if (failingSince != 0) failing = Clock::from_time_t(static_cast<std::time_t>(failingSince));
  const std::string context = "kecpp:indications#" + run + "#" + std::to_string(made++);
  entry.delivery = std::make_shared<Delivery>(*url, context, failing, policy, counters);
}

void Entries::Modify(const Stored& instance, const std::vector<GivenProperty>& given,
                     const std::optional<std::vector<std::string>>& wanted) {
  const Entry& former = Get(instance);
  StoredInstance next =
      MakeInstance(instance->Type(), Merge(*instance, given, wanted), Author::File,
                   [this](const KeyBinding& reference) { return Resolve(reference); });
  bool isOther = false, isOtherState = false;
  for (const ClassProperty& property : instance->Properties()) {
    const char* name = property.row->name;
    if (IsSame(ValueOf(*instance, name), ValueOf(next, name))) continue;
    const Changes changes = ChangesOf(instance->Type(), name);
    if (changes == Changes::Never) Refuse(std::string(name) + " cannot be changed");
    if (changes == Changes::Unused && IsUsed(instance)) {
      Refuse(std::string(name) + " cannot be changed while there is a subscription",
             Status::Failed);
    }
    isOther = isOther || changes == Changes::Unused;
    isOtherState = isOtherState || SameName(name, "SubscriptionState");
  }
  if (isOtherState) next.Set("TimeOfLastStateChange", CimTime(Clock::now()));
  Entry renewed = MakeEntry(std::move(next), Author::Client, 0);
  if (!isOther) renewed.delivery = former.delivery;
  Renew(instance, renewed);
}

// Subscriptions refer to the instance itself.
void Entries::Renew(const Stored& former, const Entry& renewed) {
  const Stored next = renewed.instance;
  for (Entry& entry : entries) {
    if (entry.instance == former) {
      entry = renewed;
      continue;
    }
    for (const char* end : {"Filter", "Handler"}) {
      if (!entry.instance->Type().isAssociation || TargetOf(*entry.instance, end) != former) {
        continue;
      }
      StoredInstance copy = *entry.instance;
      copy.Set(end, next);
      entry.instance = std::make_shared<const StoredInstance>(std::move(copy));
    }
  }
}

void Entries::Delete(const Stored& instance) {
  const Entry& entry = Get(instance);
  if (IsUsed(instance)) Refuse("there is a subscription that names it", Status::Failed);
  entries.erase(entries.begin() + (&entry - entries.data()));
}

std::vector<std::string> Entries::RemoveExpired(Time now) {
  std::vector<std::string> removed;
  const auto hasExpired = [&](const Entry& entry) {
    if (!entry.instance->Type().isAssociation) return false;
    const StoredInstance& subscription = *entry.instance;
    const Stored handler = TargetOf(subscription, "Handler");
    const std::string text = TextOf(subscription, "SubscriptionDuration");
    const auto age = std::chrono::duration_cast<std::chrono::seconds>(
        now - ReadCimTime(TextOf(subscription, "SubscriptionStartTime")));
    unsigned long long duration = 0;
    const bool isTimed =
        std::from_chars(text.data(), text.data() + text.size(), duration).ec == std::errc();
    const bool isOver =
        isTimed && age.count() >= 0 && static_cast<unsigned long long>(age.count()) >= duration;
    const auto failing = Find(handler)->delivery->FailingSince();
    const bool isDead = failing && now - *failing >= policy.removalInterval;
    if (isOver || isDead) {
      removed.push_back("the subscription of " + TextOf(*handler, "Destination") +
                        (isOver ? " has ended" : " was removed: its listener does not answer"));
    }
    return isOver || isDead;
  };
  std::vector<Entry> rest;
  for (const Entry& entry : entries) {
    if (!hasExpired(entry)) rest.push_back(entry);
  }
  entries = std::move(rest);
  return removed;
}

std::vector<Stored> Entries::Instances() const {
  std::vector<Stored> all;
  for (const Entry& entry : entries) {
    all.push_back(entry.instance);
    if (entry.link) all.push_back(entry.link);
  }
  return all;
}

std::shared_ptr<const Plan> Entries::MakePlan() const {
  auto plan = std::make_shared<Plan>();
  for (const Entry& entry : entries) {
    if (!entry.instance->Type().isAssociation ||
        TextOf(*entry.instance, "SubscriptionState") != ENABLED) {
      continue;
    }
    const Stored filter = TargetOf(*entry.instance, "Filter");
    plan->Add({TextOf(*filter, "Name"), Find(filter)->filter,
               Find(TargetOf(*entry.instance, "Handler"))->delivery});
  }
  return plan;
}

// Subscriptions behind what they name.
std::vector<KeptInstance> Entries::Kept() const {
  std::vector<KeptInstance> kept;
  for (const bool isAssociation : {false, true}) {
    for (const Entry& entry : entries) {
      if (entry.instance->Type().isAssociation != isAssociation) continue;
      const auto failing = entry.delivery ? entry.delivery->FailingSince() : std::nullopt;
      kept.push_back({&entry.instance->Type(), PropertiesGiven(*entry.instance),
                      failing ? static_cast<long long>(Clock::to_time_t(*failing)) : 0});
    }
  }
  return kept;
}

void Entries::Restore(const std::vector<KeptInstance>& kept) {
  for (const KeptInstance& one : kept) {
    Add(*one.type, one.properties, Author::File, one.failingSince);
  }
}

Entries::Backup Entries::Save() const {
  Backup backup;
  backup.entries = entries;
  return backup;
}

void Entries::EndDeliveries() const {
  for (const Entry& entry : entries) {
    if (entry.delivery) entry.delivery->End();
  }
}

}  // namespace tools::agent
