// SPDX-License-Identifier: MIT
#include "datasync/FilterSpec.h"

#include "datasync/FilterWriter.h"
#include "datasync/PropertyList.h"

namespace KE::Service {

using KELib::Xml::KEXmlBuffer;

void CreatePropertySet(KELib::KEVector<KELib::KEString>& list, KEXmlBuffer& xml) {
  WritePropertySets(PropertyList(list), xml);
}

void CreateSelectSet(KELib::KEVector<KELib::KEString>& list, KEXmlBuffer& xml) {
  WriteSelectSets(PropertyList(list), xml);
}

void CreateObjectSet(KE::Stub::ManagedObjectReference* root, KELib::KEVector<KELib::KEString>& list,
                     KEXmlBuffer& xml) {
  WriteObjectSet(*root, PropertyList(list), xml);
}

void CreateFilterSpec(KE::Stub::ManagedObjectReference* root,
                      KELib::KEVector<KELib::KEString>& list, KEXmlBuffer& xml) {
  WriteFilterSpec(*root, PropertyList(list), xml);
}

}  // namespace KE::Service
