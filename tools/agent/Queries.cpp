// SPDX-License-Identifier: MIT
#include "tools/agent/Queries.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/common/ObjectView.h"

namespace tools::agent {
namespace {

bool RolePasses(const std::string& wanted, const PropertyRow& role) {
  return wanted.empty() || SameName(wanted, role.name);
}

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

// An object's key, and for each of some sides the keys of its partners as a list. Nothing else is
// done while the library's locks are held: an object may have thousands of links.
struct Keys {
  std::string own;
  std::vector<std::string> partners;

  Keys(const ObjectView& object, const ClassRow& type, const std::vector<Side>& sides) {
    type.key->read(object, own);
    for (const Side& side : sides) {
      const ReadValue read = side.isOrigin ? side.assocClass->results : side.assocClass->origins;
      read(object, partners.emplace_back());
    }
  }
};

}  // namespace

const std::string& LinkFromEnd::PartnerKey() const {
  return partnerType == &OriginOf(*link.type) ? link.originKey : link.resultKey;
}

void ReadAll(const kecpp::Inventory& inventory, Rows& rows) {
  const kecpp::Kind kind = *rows.Type().kind;
  rows.Expect(inventory.Count(kind));
  ForEachView(inventory, kind, [&](const ObjectView& object) { rows.Add(object); });
}

bool ReadOne(const kecpp::Inventory& inventory, const std::string& key, Rows& rows) {
  return LookAtView(inventory, *rows.Type().kind, key,
                    [&](const ObjectView& object) { rows.Add(object); });
}

bool ReadLinks(const kecpp::Inventory& inventory, const ObjectName& object,
               const LinkFilter& filter, std::vector<LinkFromEnd>& links) {
  const std::vector<Side> sides = SidesOf(*object.type, filter);
  std::optional<Keys> keys;
  LookAtView(inventory, *object.type->kind, object.key,
             [&](const ObjectView& view) { keys.emplace(view, *object.type, sides); });
  for (std::size_t i = 0; keys && i < sides.size(); ++i) {
    for (const std::string_view partner : Items(keys->partners[i])) {
      Link link{sides[i].assocClass, keys->own, std::string(partner)};
      if (!sides[i].isOrigin) link.originKey.swap(link.resultKey);
      links.push_back({std::move(link), &sides[i].Partner()});
    }
  }
  return keys.has_value();
}

std::vector<Link> ReadAllLinks(const kecpp::Inventory& inventory, const ClassRow& assocClass) {
  const ClassRow& origin = OriginOf(assocClass);
  std::vector<Keys> all;
  ForEachView(inventory, *origin.kind, [&](const ObjectView& object) {
    all.emplace_back(object, origin, std::vector<Side>{{&assocClass, true}});
  });
  std::vector<Link> links;
  for (const Keys& keys : all) {
    for (const std::string_view result : Items(keys.partners[0])) {
      links.push_back({&assocClass, keys.own, std::string(result)});
    }
  }
  return links;
}

bool ReadLink(const kecpp::Inventory& inventory, const std::string& origin,
              const std::string& result, Link& link) {
  LinkFilter filter;
  filter.assocClass = link.type;
  std::vector<LinkFromEnd> links;
  ReadLinks(inventory, {&OriginOf(*link.type), origin}, filter, links);
  const auto found = std::find_if(links.begin(), links.end(), [&](const LinkFromEnd& candidate) {
    return kecpp::Decode(candidate.link.resultKey) == result;
  });
  if (found == links.end()) return false;
  link = found->link;
  return true;
}

}  // namespace tools::agent
