// SPDX-License-Identifier: MIT
#include "tools/agent/indications/EventFilter.h"

#include <algorithm>

#include "tools/agent/Errors.h"
#include "tools/agent/query/Tokens.h"

namespace tools::agent {
namespace {

constexpr EventType TYPES[] = {EventType::Creation, EventType::Modification, EventType::Deletion};

// One of the instances in an event.
class RowRecord final : public query::Record {
 public:
  RowRecord(const ClassRow& type, const Rows* values) : rows(values) {
    if (!type.isAssociation) columns = PropertiesOf(type);
  }

  bool IsThere() const { return rows != nullptr; }

  // The first cell of a row is the key.
  bool Read(const ClassProperty& property, std::string& out) const override {
    const auto column = std::find_if(columns.begin(), columns.end(), [&](const ClassProperty& one) {
      return one.row == property.row;
    });
    if (column == columns.end()) return false;
    const auto value = rows->At(0, static_cast<std::size_t>(column - columns.begin()) + 1);
    if (value) out += kecpp::Decode(*value);
    return value.has_value();
  }

 private:
  std::vector<ClassProperty> columns;  // none of a link: references are not compared
  const Rows* rows;
};

class EventRecord final : public query::Record {
 public:
  explicit EventRecord(const Event& event)
      : now(*event.source, event.now), before(*event.source, event.before) {}

  bool Read(const ClassProperty&, std::string&) const override { return false; }
  const query::Record* Embedded(std::size_t place) const override {
    const RowRecord& record = place == 0 ? now : before;
    return record.IsThere() ? &record : nullptr;
  }

 private:
  RowRecord now;
  RowRecord before;
};

const ClassRow& IndicationClass(EventType type) {
  return *FindClass(INDICATION_CLASSES[static_cast<std::size_t>(type)]);
}

query::Query ReadFilter(const std::string& language, const std::string& text) {
  const auto known = query::FindLanguage(language);
  if (!known || known == query::Language::fql) {
    throw OperationError(Status::QueryLanguageNotSupported,
                         "filters in " + language + " are not read");
  }
  query::Query read = query::ParseQuery(*known, text);
  if (!read.selected.empty()) query::Refuse("filters select *");
  const ClassRow* asked = FindClass(read.className);
  if (!asked || !asked->isIndication) query::Refuse("there is no indication " + read.className);
  return read;
}

query::Scope ScopeOf(EventType type, const ClassRow& source, const std::string& alias) {
  query::Scope scope{&IndicationClass(type), alias, {{"SourceInstance", &source}}};
  if (type == EventType::Modification) scope.embedded.push_back({"PreviousInstance", &source});
  return scope;
}

}  // namespace

const std::vector<const ClassRow*>& EventSources() {
  static const auto& sources = *[] {
    auto* found = new std::vector<const ClassRow*>;
    for (const ClassRow* type : AllClasses()) {
      if (type->kind || type->results) found->push_back(type);
    }
    return found;
  }();
  return sources;
}

EventFilter::EventFilter(const std::string& language, const std::string& text) {
  const query::Query read = ReadFilter(language, text);
  const ClassRow& asked = *FindClass(read.className);
  std::optional<OperationError> failure;
  for (const EventType type : TYPES) {
    if (!DerivesFrom(IndicationClass(type), asked)) continue;
    for (const ClassRow* source : EventSources()) {
      if (source->isAssociation && type == EventType::Modification) continue;
      const Place place(type, source);
      if (!read.where) {
        covered.emplace(place, std::nullopt);
        continue;
      }
      try {
        query::Condition condition(*read.where, ScopeOf(type, *source, read.alias));
        if (condition.CanHold()) covered.emplace(place, std::move(condition));
      } catch (const OperationError& error) {
        failure.emplace(error);  // another class may have what this one lacks
      }
    }
  }
  if (covered.empty() && failure) throw *failure;
  if (covered.empty()) query::Refuse("nothing that changes can pass it");
}

bool EventFilter::Covers(EventType type, const ClassRow& source) const {
  return covered.count({type, &source}) > 0;
}

bool EventFilter::Passes(const Event& event) const {
  const auto found = covered.find({event.type, event.source});
  return found != covered.end() && (!found->second || found->second->Holds(EventRecord(event)));
}

}  // namespace tools::agent
