// SPDX-License-Identifier: MIT
#include "tools/agent/PropertyElements.h"

namespace tools::agent {

PropertyElement::PropertyElement(const PropertyRow& row)
    : name(row.type == CimType::Reference ? "PROPERTY.REFERENCE"
           : row.isArray                  ? "PROPERTY.ARRAY"
                                          : "PROPERTY"),
      kind(row.type == CimType::Reference ? "REFERENCECLASS" : "TYPE"),
      type(row.type == CimType::Reference ? row.reference : TypeName(row.type)) {}

void OpenProperty(XmlWriter& out, const ClassProperty& property, bool origins) {
  const PropertyElement element(*property.row);
  if (origins) {
    out.Open(element.name, {{"NAME", property.row->name},
                            {element.kind, element.type},
                            {"CLASSORIGIN", property.origin->name},
                            {"PROPAGATED", property.isOwn ? "false" : "true"}});
  } else {
    out.Open(element.name, {{"NAME", property.row->name}, {element.kind, element.type}});
  }
}

}  // namespace tools::agent
