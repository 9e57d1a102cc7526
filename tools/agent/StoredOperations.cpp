// SPDX-License-Identifier: MIT
#include "tools/agent/StoredOperations.h"

#include <algorithm>
#include <utility>

#include "tools/agent/StoredElements.h"

namespace tools::agent {
namespace {

using List = std::vector<Stored>;

StoredElements Elements(const Call& call, XmlWriter& out) {
  return {out, call.host, call.request.nameSpace, call.request.Flag("IncludeClassOrigin", false)};
}

List OfClass(const Call& call, const ClassRow& asked) {
  List found = call.stored.All();
  const auto isOther = [&](const Stored& instance) {
    return !DerivesFrom(instance->Type(), asked);
  };
  found.erase(std::remove_if(found.begin(), found.end(), isOther), found.end());
  return found;
}

Stored Named(const Call& call, const char* parameter) {
  const Parameter& name = InstanceParameter(call.request, parameter);
  KnownClass(call.request, name.value);
  for (Stored& instance : call.stored.All()) {
    if (instance->IsNamed(name.value, name.keys)) return std::move(instance);
  }
  throw OperationError(Status::NotFound, "there is no such instance");
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

Content WithPaths(const Call& call, List found) {
  return [call, found = std::move(found)](XmlWriter& out) {
    StoredElements elements = Elements(call, out);
    for (const Stored& instance : found) {
      out.Open("VALUE.OBJECTWITHPATH");
      elements.Path(*instance);
      elements.Instance(*instance, WantedProperties(call.request, instance->Type()));
      out.Close("VALUE.OBJECTWITHPATH");
    }
  };
}

Content Paths(const Call& call, List found) {
  return [call, found = std::move(found)](XmlWriter& out) {
    StoredElements elements = Elements(call, out);
    for (const Stored& instance : found) {
      out.Open("OBJECTPATH");
      elements.Path(*instance);
      out.Close("OBJECTPATH");
    }
  };
}

}  // namespace

Content EnumerateStored(const Call& call) {
  const ClassRow& asked = RequestedClass(call.request);
  return [call, &asked, found = OfClass(call, asked)](XmlWriter& out) {
    StoredElements elements = Elements(call, out);
    for (const Stored& instance : found) {
      out.Open("VALUE.NAMEDINSTANCE");
      elements.Name(*instance);
      elements.Instance(*instance, InstanceProperties(call.request, asked, instance->Type()));
      out.Close("VALUE.NAMEDINSTANCE");
    }
  };
}

Content EnumerateStoredNames(const Call& call) {
  return [call, found = OfClass(call, RequestedClass(call.request))](XmlWriter& out) {
    StoredElements elements = Elements(call, out);
    for (const Stored& instance : found) elements.Name(*instance);
  };
}

Content GetStored(const Call& call) {
  return [call, instance = Named(call, "InstanceName")](XmlWriter& out) {
    Elements(call, out).Instance(*instance, WantedProperties(call.request, instance->Type()));
  };
}

Content StoredAssociators(const Call& call) {
  return WithPaths(call, Partners(call));
}

Content StoredAssociatorNames(const Call& call) {
  return Paths(call, Partners(call));
}

Content StoredReferences(const Call& call) {
  return WithPaths(call, Links(call));
}

Content StoredReferenceNames(const Call& call) {
  return Paths(call, Links(call));
}

}  // namespace tools::agent
