// SPDX-License-Identifier: MIT
#include "tools/agent/LinkOperations.h"

#include <algorithm>

#include "tools/agent/Errors.h"
#include "tools/agent/ObjectElements.h"

namespace tools::agent {
namespace {

// Reads the links of the object that "ObjectName" names, and calls `use` with the inventory and
// these. A link is an object, too, and has none.
template <class Use>
void ReadObjectLinks(const Call& call, const LinkFilter& filter, Use use) {
  if (NamesLink(call.request, "ObjectName")) {
    NamedLink(call, "ObjectName");
    return;
  }
  const auto objects = NamedObjects(call.request, "ObjectName");
  bool found = false;
  ReadInventory(call, TypesOf(objects), [&](const kecpp::Inventory& inventory) {
    for (const ObjectName& object : objects) {
      std::vector<LinkFromEnd> links;
      found = ReadLinks(inventory, object, filter, links);
      if (found) return use(inventory, links);
    }
  });
  if (!found) throw OperationError(Status::NotFound, "there is no such instance");
}

LinkFilter PartnerFilter(const Request& request) {
  return {FilterClass(request, "AssocClass"), FilterClass(request, "ResultClass"),
          request.Text("Role"), request.Text("ResultRole")};
}

// Of references the result class is that of the association.
LinkFilter ReferenceFilter(const Request& request) {
  return {FilterClass(request, "ResultClass"), nullptr, request.Text("Role"), ""};
}

// Partners by class, each class with its own columns.
class Partners {
 public:
  Partners(const Request& request, bool withProperties) {
    for (const ClassRow* type : AllClasses()) {
      if (!type->kind) continue;
      groups.emplace_back(
          *type, withProperties ? WantedProperties(request, *type) : std::vector<ClassProperty>());
    }
  }

  // A partner that has gone meanwhile is left out.
  void Read(const kecpp::Inventory& inventory, const LinkFromEnd& link) {
    Rows& rows = RowsOf(*link.partnerType);
    if (rows.Columns().empty()) {
      rows.AddKey(link.PartnerKey());
    } else {
      ReadOne(inventory, kecpp::Decode(link.PartnerKey()), rows);
    }
  }

  template <class Write>
  void ForEach(Write write) const {
    for (const Rows& rows : groups) {
      for (std::size_t row = 0; row < rows.Count(); ++row) write(rows, row);
    }
  }

 private:
  Rows& RowsOf(const ClassRow& type) {
    return *std::find_if(groups.begin(), groups.end(),
                         [&](const Rows& rows) { return &rows.Type() == &type; });
  }

  std::vector<Rows> groups;
};

using Links = std::vector<LinkFromEnd>;

Partners ReadPartners(const Call& call, bool withProperties) {
  Partners partners(call.request, withProperties);
  ReadObjectLinks(call, PartnerFilter(call.request),
                  [&](const kecpp::Inventory& inventory, const Links& links) {
                    for (const LinkFromEnd& link : links) partners.Read(inventory, link);
                  });
  return partners;
}

std::vector<Link> ReadReferences(const Call& call) {
  std::vector<Link> references;
  ReadObjectLinks(call, ReferenceFilter(call.request),
                  [&](const kecpp::Inventory&, const Links& links) {
                    for (const LinkFromEnd& link : links) references.push_back(link.link);
                  });
  return references;
}

ObjectElements Elements(const Call& call, XmlWriter& out) {
  return {out, call.host, call.request.Flag("IncludeClassOrigin", false)};
}

}  // namespace

Content Associators(const Call& call) {
  return [call, partners = ReadPartners(call, true)](XmlWriter& out) {
    ObjectElements elements = Elements(call, out);
    partners.ForEach([&](const Rows& rows, std::size_t row) {
      out.Open("VALUE.OBJECTWITHPATH");
      elements.Path(rows, row);
      elements.Instance(rows, row);
      out.Close("VALUE.OBJECTWITHPATH");
    });
  };
}

Content AssociatorNames(const Call& call) {
  return [call, partners = ReadPartners(call, false)](XmlWriter& out) {
    ObjectElements elements = Elements(call, out);
    partners.ForEach([&](const Rows& rows, std::size_t row) {
      out.Open("OBJECTPATH");
      elements.Path(rows, row);
      out.Close("OBJECTPATH");
    });
  };
}

Content References(const Call& call) {
  return [call, links = ReadReferences(call)](XmlWriter& out) {
    ObjectElements elements = Elements(call, out);
    const ClassRow* type = nullptr;
    std::vector<ClassProperty> columns;
    for (const Link& link : links) {
      if (link.type != type) columns = WantedProperties(call.request, *link.type);
      type = link.type;
      out.Open("VALUE.OBJECTWITHPATH");
      elements.Path(link);
      elements.Instance(link, columns);
      out.Close("VALUE.OBJECTWITHPATH");
    }
  };
}

Content ReferenceNames(const Call& call) {
  return [call, links = ReadReferences(call)](XmlWriter& out) {
    ObjectElements elements = Elements(call, out);
    for (const Link& link : links) {
      out.Open("OBJECTPATH");
      elements.Path(link);
      out.Close("OBJECTPATH");
    }
  };
}

}  // namespace tools::agent
