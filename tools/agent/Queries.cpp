// SPDX-License-Identifier: MIT
#include "tools/agent/Queries.h"

#include <string_view>
#include <utility>

#include "tools/common/ObjectView.h"
#include "tools/common/Split.h"

namespace tools::agent {
namespace {

// The side of an association on which objects of one class are.
struct Side {
  const ClassRow* assocClass;
  bool isOrigin;

  const ClassRow& Partner() const {
    return isOrigin ? ResultOf(*assocClass) : OriginOf(*assocClass);
  }
  bool Passes(const LinkFilter& filter) const {
    const PropertyRow* roles = assocClass->properties;  // the origin's, the result's
    return (!filter.assocClass || DerivesFrom(*assocClass, *filter.assocClass)) &&
           (!filter.partnerClass || DerivesFrom(Partner(), *filter.partnerClass)) &&
           RolePasses(filter.ownRole, roles[isOrigin ? 0 : 1]) &&
           RolePasses(filter.partnerRole, roles[isOrigin ? 1 : 0]);
  }
};

// The sides on which an object of a class can be, of associations that pass the filter.
std::vector<Side> SidesOf(const ClassRow& type, const LinkFilter& filter) {
  std::vector<Side> sides;
  for (const ClassRow* assocClass : AllClasses()) {
    if (!assocClass->results) continue;
    const bool isOrigin = &OriginOf(*assocClass) == &type;
    const Side side{assocClass, isOrigin};
    if ((isOrigin || &ResultOf(*assocClass) == &type) && side.Passes(filter)) sides.push_back(side);
  }
  return sides;
}

}  // namespace

bool RolePasses(const std::string& wanted, const PropertyRow& role) {
  return wanted.empty() || SameName(wanted, role.name);
}

bool ReadOne(const kecpp::Inventory& inventory, const ObjectName& object,
             const std::vector<ClassProperty>& properties, Rows& row) {
  return LookAtView(inventory, *object.type->kind, object.key, [&](const ObjectView& view) {
    row.Put(object.type->key->read, view);
    for (const ClassProperty& property : properties) row.Put(property.row->read, view);
  });
}

// Nothing but keys is copied while the library's locks are held: an object may have thousands of
// links.
std::optional<LinksOfObject> ReadLinks(const kecpp::Inventory& inventory, const ObjectName& object,
                                       const LinkFilter& filter) {
  LinksOfObject links;
  for (const Side& side : SidesOf(*object.type, filter)) {
    links.byClass.push_back({side.assocClass, &side.Partner(), side.isOrigin, ""});
  }
  const bool found =
      LookAtView(inventory, *object.type->kind, object.key, [&](const ObjectView& view) {
        object.type->key->read(view, links.key);
        for (LinksOfClass& some : links.byClass) {
          (some.isOrigin ? some.type->results : some.type->origins)(view, some.partners);
        }
      });
  return found ? std::optional<LinksOfObject>(std::move(links)) : std::nullopt;
}

bool ReadLink(const kecpp::Inventory& inventory, const std::string& origin,
              const std::string& result, Link& link) {
  LinkFilter filter;
  filter.assocClass = link.type;
  const auto links = ReadLinks(inventory, {&OriginOf(*link.type), origin}, filter);
  if (!links) return false;
  for (std::string_view rest = links->byClass.front().partners; !rest.empty();) {
    const std::string_view partner = TakePart(rest, '\0');
    if (kecpp::Decode(partner) != result) continue;
    link.originKey = links->key;
    link.resultKey = partner;
    return true;
  }
  return false;
}

}  // namespace tools::agent
