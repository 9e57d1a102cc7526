// SPDX-License-Identifier: MIT
#include "tools/agent/QueryOperations.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "tools/agent/ObjectElements.h"
#include "tools/agent/StoredElements.h"
#include "tools/agent/query/Condition.h"
#include "tools/agent/query/Query.h"

namespace tools::agent {
namespace {

using query::Condition;

// An object as it is in the inventory.
class ViewRecord final : public query::Record {
 public:
  explicit ViewRecord(const ObjectView& objectView) : object(objectView) {}

  bool Read(const ClassProperty& property, std::string& out) const override {
    std::string stored;
    if (!property.row->read(object, stored)) return false;
    out += kecpp::Decode(stored);
    return true;
  }

 private:
  const ObjectView& object;
};

class StoredRecord final : public query::Record {
 public:
  explicit StoredRecord(const StoredInstance& storedInstance) : instance(storedInstance) {}

  bool Read(const ClassProperty& property, std::string& out) const override {
    const auto& all = instance.Properties();
    const auto found = std::find_if(all.begin(), all.end(), [&](const ClassProperty& candidate) {
      return candidate.row == property.row;
    });
    const auto& value = instance.Value(static_cast<std::size_t>(found - all.begin()));
    if (!value) return false;
    if (!property.row->isArray) {
      out += value->items.front();
      return true;
    }
    for (const std::string& item : value->items) (out += item) += '\0';
    return true;
  }

 private:
  const StoredInstance& instance;
};

// A link has no values that a condition can read.
class LinkRecord final : public query::Record {
 public:
  bool Read(const ClassProperty&, std::string&) const override { return false; }
};

// A request's query. Names and types were looked up in the class that it asks.
struct Asked {
  query::Query query;
  const ClassRow* type;
};

Asked ReadQuery(const Request& request) {
  const std::string name = request.Text("QueryLanguage");
  const auto language = query::FindLanguage(name);
  if (!language || language == query::Language::fql) {
    throw OperationError(Status::QueryLanguageNotSupported, "queries in " + name + " are not read");
  }
  Asked asked{query::ParseQuery(*language, request.Text("Query")), nullptr};
  asked.type = &KnownClass(request, asked.query.className, Status::InvalidQuery);
  for (const query::Path& path : asked.query.selected) {
    query::FindProperty(path, *asked.type, asked.query.alias);
  }
  if (asked.query.where) Condition(*asked.query.where, *asked.type, asked.query.alias);
  return asked;
}

// The properties that are selected, as a class that is or derives from the asked one has them.
std::vector<ClassProperty> Selected(const query::Query& query, const ClassRow& type) {
  if (query.selected.empty()) return PropertiesOf(type);
  std::vector<ClassProperty> properties;
  for (const query::Path& path : query.selected) {
    properties.push_back(query::FindProperty(path, type, query.alias));
  }
  return properties;
}

Wanted WantedObjects(const query::Query& query, const ClassRow& type) {
  const auto condition = std::make_shared<Condition>(*query.where, type, query.alias);
  return [condition](const ObjectView& object) { return condition->Holds(ViewRecord(object)); };
}

std::unique_ptr<Cursor> Objects(const Call& call, const query::Query& query, const ClassRow& type) {
  const auto columns = Selected(query, type);
  Element element = ObjectElement({Shape::ObjectWithPath, call.host, false}, type, columns);
  if (!query.where) return ObjectsOf(type, columns, std::move(element));
  Wanted wanted = WantedObjects(query, type);
  if (auto key = query::RequiredKey(*query.where, type, query.alias)) {
    return ObjectOf(type, columns, std::move(element), std::move(*key), std::move(wanted));
  }
  return ObjectsOf(type, columns, std::move(element), std::move(wanted));
}

// Null when the condition keeps all of them out.
std::unique_ptr<Cursor> Links(const Call& call, const query::Query& query, const ClassRow& type) {
  if (query.where && !Condition(*query.where, type, query.alias).Holds(LinkRecord())) {
    return nullptr;
  }
  return LinksOf(
      type, LinkElement({Shape::ObjectWithPath, call.host, false}, type, Selected(query, type)));
}

}  // namespace

Content ExecQuery(const Call& call) {
  const Asked asked = ReadQuery(call.request);
  const auto types = ConcreteClasses(*asked.type);
  const auto visit = EnterInventory(call, types);
  Cursors cursors;
  for (const ClassRow* type : types) {
    auto cursor =
        type->isAssociation ? Links(call, asked.query, *type) : Objects(call, asked.query, *type);
    if (cursor) cursors.push_back(std::move(cursor));
  }
  return {InSequence(std::move(cursors)), visit};
}

Content ExecStoredQuery(const Call& call) {
  const Asked asked = ReadQuery(call.request);
  std::vector<std::pair<Stored, std::vector<ClassProperty>>> found;
  for (const Stored& instance : call.stored.All()) {
    const ClassRow& type = instance->Type();
    if (!DerivesFrom(type, *asked.type)) continue;
    const auto& where = asked.query.where;
    if (where && !Condition(*where, type, asked.query.alias).Holds(StoredRecord(*instance))) {
      continue;
    }
    found.emplace_back(instance, Selected(asked.query, type));
  }
  return [host = call.host, nameSpace = call.request.nameSpace,
          found = std::move(found)](XmlWriter& out) {
    StoredElements elements(out, host, nameSpace, false);
    for (const auto& [instance, properties] : found) {
      out.Open("VALUE.OBJECTWITHPATH");
      elements.Path(*instance);
      elements.Instance(*instance, properties);
      out.Close("VALUE.OBJECTWITHPATH");
    }
  };
}

}  // namespace tools::agent
