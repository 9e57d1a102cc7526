// SPDX-License-Identifier: MIT
#include "tools/agent/QueryOperations.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "tools/agent/ObjectElements.h"
#include "tools/agent/Records.h"
#include "tools/agent/StoredCursor.h"
#include "tools/agent/query/Query.h"

namespace tools::agent {
namespace {

using query::Condition;

std::unique_ptr<Cursor> Objects(const Call& call, const query::Query& query, const ClassRow& type,
                                Shape shape) {
  const auto columns = Selected(query, type);
  Element element = ObjectElement({shape, call.host, false}, type, columns);
  if (!query.where) return ObjectsOf(type, columns, std::move(element));
  Wanted wanted = WantedObjects(*query.where, type, query.alias);
  if (auto key = query::RequiredKey(*query.where, type, query.alias)) {
    return ObjectOf(type, columns, std::move(element), std::move(*key), std::move(wanted));
  }
  return ObjectsOf(type, columns, std::move(element), std::move(wanted));
}

// Null when the condition keeps all of them out.
std::unique_ptr<Cursor> Links(const Call& call, const query::Query& query, const ClassRow& type,
                              Shape shape) {
  if (query.where && !Condition(*query.where, type, query.alias).Holds(LinkRecord())) {
    return nullptr;
  }
  return LinksOf(type, LinkElement({shape, call.host, false}, type, Selected(query, type)));
}

}  // namespace

Asked ReadQuery(const Request& request, const char* language, const char* text) {
  const std::string name = request.Text(language);
  const auto found = query::FindLanguage(name);
  if (!found || found == query::Language::fql) {
    throw OperationError(Status::QueryLanguageNotSupported, "queries in " + name + " are not read");
  }
  Asked asked{query::ParseQuery(*found, request.Text(text)), nullptr};
  asked.type = &KnownClass(request, asked.query.className, Status::InvalidQuery);
  for (const query::Path& path : asked.query.selected) {
    query::FindProperty(path, *asked.type, asked.query.alias);
  }
  if (asked.query.where) Condition(*asked.query.where, *asked.type, asked.query.alias);
  return asked;
}

std::vector<ClassProperty> Selected(const query::Query& query, const ClassRow& type) {
  if (query.selected.empty()) return PropertiesOf(type);
  std::vector<ClassProperty> properties;
  for (const query::Path& path : query.selected) {
    properties.push_back(query::FindProperty(path, type, query.alias));
  }
  return properties;
}

Content SelectByQuery(const Call& call, const Asked& asked, Shape shape) {
  const auto types = ConcreteClasses(*asked.type);
  const auto visit = EnterInventory(call, types);
  Cursors cursors;
  for (const ClassRow* type : types) {
    auto cursor = type->isAssociation ? Links(call, asked.query, *type, shape)
                                      : Objects(call, asked.query, *type, shape);
    if (cursor) cursors.push_back(std::move(cursor));
  }
  return {InSequence(std::move(cursors)), visit};
}

Content SelectStoredByQuery(const Call& call, const Asked& asked, Shape shape) {
  const auto& where = asked.query.where;
  std::vector<StoredChoice> choices;
  for (const Stored& instance : call.stored.All()) {
    const ClassRow& type = instance->Type();
    if (!DerivesFrom(type, *asked.type)) continue;
    const bool holds =
        !where || Condition(*where, type, asked.query.alias).Holds(StoredRecord(*instance));
    if (holds) choices.push_back({instance, Selected(asked.query, type)});
  }
  return Content(StoredOnes(std::move(choices), {shape, call.host, call.request.nameSpace, false}));
}

Content ExecQuery(const Call& call) {
  return SelectByQuery(call, ReadQuery(call.request, "QueryLanguage", "Query"),
                       Shape::ObjectWithPath);
}

Content ExecStoredQuery(const Call& call) {
  return SelectStoredByQuery(call, ReadQuery(call.request, "QueryLanguage", "Query"),
                             Shape::ObjectWithPath);
}

}  // namespace tools::agent
