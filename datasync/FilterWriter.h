// SPDX-License-Identifier: MIT
//
// Writes a property list that has been read as the filter that "CreateFilter" takes. The functions
// of datasync/FilterSpec.h read a list and call these.
//
// Each function appends to `xml`, throws what its namesake there throws, and writes texts as they
// are: an agent's types and paths are names, which need no escaping.
#ifndef KECPP_DATASYNC_FILTERWRITER_H
#define KECPP_DATASYNC_FILTERWRITER_H

namespace KELib::Xml {
class KEXmlBuffer;
}
namespace KE::Stub {
class ManagedObjectReference;
}

namespace KE::Service {

class PropertyList;

void WritePropertySets(const PropertyList& list, KELib::Xml::KEXmlBuffer& xml);
void WriteSelectSets(const PropertyList& list, KELib::Xml::KEXmlBuffer& xml);
void WriteObjectSet(const KE::Stub::ManagedObjectReference& root, const PropertyList& list,
                    KELib::Xml::KEXmlBuffer& xml);
void WriteFilterSpec(const KE::Stub::ManagedObjectReference& root, const PropertyList& list,
                     KELib::Xml::KEXmlBuffer& xml);

}  // namespace KE::Service

#endif
