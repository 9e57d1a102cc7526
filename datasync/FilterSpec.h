// SPDX-License-Identifier: MIT
//
// Writes a property list as the filter that "CreateFilter" takes. docs/watching.md explains the
// grammar of the list to authors of agents, datasync/PropertyList.h to maintainers.
//
// Each function appends to `xml`. Texts are written unchanged: an agent's types and paths are
// names, which need no escaping.
#ifndef KECPP_DATASYNC_FILTERSPEC_H
#define KECPP_DATASYNC_FILTERSPEC_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "foundation/KEVector.h"

namespace KELib::Xml {
class KEXmlBuffer;
}
namespace KE::Stub {
class ManagedObjectReference;
}

namespace KE::Service {

// One "propSet" per property set. "all" is always "false": an object type without paths asks for no
// properties. Throws SystemException "No ObjectType specified for PropertySet".
KECPP_API void CreatePropertySet(KELib::KEVector<KELib::KEString>& list,
                                 KELib::Xml::KEXmlBuffer& xml);

// One "selectSet" per traversal. Throws SystemException "No ObjectType specified for SelectSet" or
// "No Path Specified for Traversal Spec".
KECPP_API void CreateSelectSet(KELib::KEVector<KELib::KEString>& list,
                               KELib::Xml::KEXmlBuffer& xml);

// The "objectSet": where the search starts and the traversals.
KECPP_API void CreateObjectSet(KE::Stub::ManagedObjectReference* root,
                               KELib::KEVector<KELib::KEString>& list,
                               KELib::Xml::KEXmlBuffer& xml);

// The whole "spec" element.
KECPP_API void CreateFilterSpec(KE::Stub::ManagedObjectReference* root,
                                KELib::KEVector<KELib::KEString>& list,
                                KELib::Xml::KEXmlBuffer& xml);

}  // namespace KE::Service

#endif
