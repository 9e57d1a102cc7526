// SPDX-License-Identifier: MIT
#include "tools/agent/StoredOperations.h"

#include <algorithm>
#include <utility>

#include "tools/agent/Records.h"
#include "tools/agent/StoredCursor.h"

namespace tools::agent {
namespace {

using List = std::vector<Stored>;

List OfClass(const Call& call, const ClassRow& asked) {
  List found = call.stored.All();
  const auto isOther = [&](const Stored& instance) {
    return !DerivesFrom(instance->Type(), asked);
  };
  found.erase(std::remove_if(found.begin(), found.end(), isOther), found.end());
  return found;
}

// The parameter that must be there and an instance with properties.
const Parameter& ObjectParameter(const Call& call, const char* name) {
  const Parameter* parameter = call.request.Find(name);
  if (parameter && parameter->kind == Parameter::Kind::Object) return *parameter;
  throw OperationError(Status::InvalidParameter, std::string(name) + " is no instance");
}

Stored Find(const Call& call, const Parameter& name) {
  KnownClass(call.request, name.value);
  for (Stored& instance : call.stored.All()) {
    if (instance->IsNamed(name.value, name.keys)) return std::move(instance);
  }
  throw OperationError(Status::NotFound, "there is no such instance");
}

Stored Named(const Call& call, const char* parameter) {
  return Find(call, InstanceParameter(call.request, parameter));
}

// Which links are wanted; null and empty take all.
struct Filter {
  const ClassRow* linkClass;
  const ClassRow* partnerClass;
  std::string role;
  std::string partnerRole;
};

// Calls `use` with the references of a link, and the instances that they lead to.
template <class Use>
void ForEachEnd(const StoredInstance& link, Use use) {
  for (std::size_t i = 0; i < link.Properties().size(); ++i) {
    const auto& value = link.Value(i);
    if (value && value->target) use(i, value->target);
  }
}

// Calls `use` with the place of each end at which a link has the object, and that the filter lets
// pass. An object may be at both.
template <class Use>
void ForEachPlace(const StoredInstance& link, const Stored& object, const Filter& filter, Use use) {
  if (filter.linkClass && !DerivesFrom(link.Type(), *filter.linkClass)) return;
  ForEachEnd(link, [&](std::size_t i, const Stored& target) {
    if (target == object && RolePasses(filter.role, *link.Properties()[i].row)) use(i);
  });
}

void AddOnce(List& found, const Stored& instance) {
  if (std::find(found.begin(), found.end(), instance) == found.end()) found.push_back(instance);
}

List Links(const Call& call) {
  const Stored object = Named(call, "ObjectName");
  const Filter filter{FilterClass(call.request, "ResultClass"), nullptr, call.request.Text("Role"),
                      ""};
  List found;
  for (const Stored& link : call.stored.All()) {
    ForEachPlace(*link, object, filter, [&](std::size_t) { AddOnce(found, link); });
  }
  return found;
}

List Partners(const Call& call) {
  const Stored object = Named(call, "ObjectName");
  const Filter filter{FilterClass(call.request, "AssocClass"),
                      FilterClass(call.request, "ResultClass"), call.request.Text("Role"),
                      call.request.Text("ResultRole")};
  List found;
  for (const Stored& link : call.stored.All()) {
    ForEachPlace(*link, object, filter, [&](std::size_t place) {
      ForEachEnd(*link, [&](std::size_t i, const Stored& target) {
        const bool passes =
            RolePasses(filter.partnerRole, *link->Properties()[i].row) &&
            (!filter.partnerClass || DerivesFrom(target->Type(), *filter.partnerClass));
        if (i != place && passes) AddOnce(found, target);
      });
    });
  }
  return found;
}

// What is answered of the instances for which the condition holds. `asked`: the class that was
// enumerated; null for other operations.
Content Answer(const Call& call, const List& found, Shape shape, const query::Expression* condition,
               const ClassRow* asked = nullptr) {
  std::vector<StoredChoice> choices;
  for (const Stored& instance : found) {
    const ClassRow& type = instance->Type();
    const bool holds =
        !condition || query::Condition(*condition, type, "").Holds(StoredRecord(*instance));
    if (!holds) continue;
    choices.push_back({instance, asked ? InstanceProperties(call.request, *asked, type)
                                       : WantedProperties(call.request, type)});
  }
  const bool origins = call.request.Flag("IncludeClassOrigin", false);
  return Content(
      StoredOnes(std::move(choices), {shape, call.host, call.request.nameSpace, origins}));
}

}  // namespace

Content SelectStored(const Call& call, Shape shape, const query::Expression* condition) {
  const ClassRow& asked = RequestedClass(call.request);
  if (condition) query::Condition(*condition, asked, "");
  return Answer(call, OfClass(call, asked), shape, condition, &asked);
}

Content SelectStoredPartners(const Call& call, Shape shape, const query::Expression* condition) {
  return Answer(call, Partners(call), shape, condition);
}

Content SelectStoredLinks(const Call& call, Shape shape, const query::Expression* condition) {
  return Answer(call, Links(call), shape, condition);
}

Content GetStored(const Call& call) {
  return Answer(call, {Named(call, "InstanceName")}, Shape::Instance, nullptr);
}

Content CreateStored(const Call& call) {
  const Parameter& given = ObjectParameter(call, "NewInstance");
  const Stored made = call.stored.Create(KnownClass(call.request, given.value), given.properties);
  return Content(StoredOnes({{made, {}}}, {Shape::Name, call.host, call.request.nameSpace, false}));
}

Content ModifyStored(const Call& call) {
  const Parameter& given = ObjectParameter(call, "ModifiedInstance");
  call.stored.Modify(Find(call, given), given.properties, call.request.List("PropertyList"));
  return Content::OfResponse([](XmlWriter&) {});
}

Content DeleteStored(const Call& call) {
  call.stored.Delete(Named(call, "InstanceName"));
  return Content::OfResponse([](XmlWriter&) {});
}

}  // namespace tools::agent
