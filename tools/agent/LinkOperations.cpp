// SPDX-License-Identifier: MIT
#include "tools/agent/LinkOperations.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "tools/agent/Errors.h"
#include "tools/agent/ObjectElements.h"
#include "tools/agent/Records.h"

namespace tools::agent {
namespace {

// What writes the links of some class, or what they lead to, of the object whose key that is.
using MakeCursor = std::function<std::unique_ptr<Cursor>(const std::string& key, LinksOfClass&)>;

// The answer about the links of the object that "ObjectName" names. A link is an object, too, and
// has none.
template <class Arrange>
Content AboutLinks(const Call& call, const LinkFilter& filter, Arrange arrange,
                   const MakeCursor& make) {
  if (NamesLink(call.request, "ObjectName")) {
    NamedLink(call, "ObjectName");
    return Content(InSequence({}));
  }
  const auto objects = NamedObjects(call.request, "ObjectName");
  const auto visit = EnterInventory(call, TypesOf(objects));
  const Turns::Turn turn(call.turns);
  for (const ObjectName& object : objects) {
    auto links = ReadLinks(visit.Inventory(), object, filter);
    if (!links) continue;
    arrange(links->byClass);
    Cursors cursors;
    for (LinksOfClass& some : links->byClass) cursors.push_back(make(links->key, some));
    return {InSequence(std::move(cursors)), visit};
  }
  visit.Confirm();
  throw OperationError(Status::NotFound, "there is no such instance");
}

ElementStyle Style(const Call& call, Shape shape) {
  return {shape, call.host, call.request.Flag("IncludeClassOrigin", false)};
}

// Partners by their class, in the order of the table of classes.
void ArrangeByPartner(std::vector<LinksOfClass>& byClass) {
  const auto all = AllClasses();
  const auto place = [&](const LinksOfClass& links) {
    return std::find(all.begin(), all.end(), links.partnerType);
  };
  std::stable_sort(byClass.begin(), byClass.end(),
                   [&](const LinksOfClass& left, const LinksOfClass& right) {
                     return place(left) < place(right);
                   });
}

}  // namespace

Content SelectPartners(const Call& call, Shape shape, const query::Expression* condition) {
  const LinkFilter filter{FilterClass(call.request, "AssocClass"),
                          FilterClass(call.request, "ResultClass"), call.request.Text("Role"),
                          call.request.Text("ResultRole")};
  return AboutLinks(call, filter, ArrangeByPartner, [&](const std::string&, LinksOfClass& links) {
    const ClassRow& type = *links.partnerType;
    std::vector<ClassProperty> columns;
    if (HasInstance(shape)) columns = WantedProperties(call.request, type);
    return ObjectsWithKeys(type, columns, std::move(links.partners),
                           ObjectElement(Style(call, shape), type, columns),
                           condition ? WantedObjects(*condition, type, "") : nullptr);
  });
}

// Of references the result class is that of the association.
Content SelectLinks(const Call& call, Shape shape, const query::Expression* condition) {
  const LinkFilter filter{FilterClass(call.request, "ResultClass"), nullptr,
                          call.request.Text("Role"), ""};
  return AboutLinks(
      call, filter, [](std::vector<LinksOfClass>&) {},
      [&](const std::string& key, LinksOfClass& links) {
        const bool holds =
            !condition || query::Condition(*condition, *links.type, "").Holds(LinkRecord());
        const auto columns = WantedProperties(call.request, *links.type);
        return LinksWithPartners(key, links.isOrigin, holds ? std::move(links.partners) : "",
                                 LinkElement(Style(call, shape), *links.type, columns));
      });
}

}  // namespace tools::agent
