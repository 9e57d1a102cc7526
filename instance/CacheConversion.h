// SPDX-License-Identifier: MIT
//
// Turns pieces of the server's XML into stub data and keeps hosts and machines linked.
//
// Thread safety: none. The two link functions read the caches and change stubs: the
//   caller holds the mutexes of the machines' and of the hosts' data cache.
#ifndef KECPP_INSTANCE_CACHECONVERSION_H
#define KECPP_INSTANCE_CACHECONVERSION_H

#include <string_view>

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib::Xml {
class KEXmlReader;
}
namespace KE::Stub {
class ManagedObjectReference;
class ZORBEL_ORXComputerSystem;
class ZORBEL_VMComputerSystem;
}  // namespace KE::Stub

namespace KE::Instance {

class KETypeCache;

// Reads one reference element into `ref`, which is created (and then the caller's) when it is null.
// The reader is in the element's start tag or anywhere before it, and behind its end tag
// afterwards. The type is the first attribute that is not "xsi:type". Throws XmlException.
KECPP_API void ConvertManagedObjectReference(const char* elementName,
                                             KELib::Xml::KEXmlReader& reader,
                                             KE::Stub::ManagedObjectReference*& ref);

// The CIM operational status of a power state: "poweredOff" 10, "poweredOn" 2, "suspended" 15,
// anything else 0.
KECPP_API void ConvertVMPowerState(KELib::KEString& state, unsigned short& code);

// The CIM operational status of a host: "gray" 0, "green" 2, "red" 6, "yellow" 3, anything else 0.
KECPP_API void ConvertHostOverallStatus(KELib::KEString& status, unsigned short& code);

// The same of a piece of a document.
unsigned short CodeOfPowerState(std::string_view state);
unsigned short CodeOfOverallStatus(std::string_view status);

// The machine was reported to run on the host `hostId`: makes or moves its link. A host that is not
// cached changes nothing. `hostType` is not used. Throws IndexOutOfBoundsException, before anything
// is changed, when the machine's list exists but is empty.
KECPP_API void ChangeVMsHostRef(KE::Stub::ZORBEL_VMComputerSystem* vm, KELib::KEString& hostType,
                                KELib::KEString& hostId, KETypeCache* cache);

// The host was reported to run the machine `vmRef`: makes the machine's link, likewise. A link to
// another host is deleted, and a new one takes its place. Constant time, however many machines the
// hosts have.
KECPP_API void ChangeHostsVMRefs(KE::Stub::ZORBEL_ORXComputerSystem* host,
                                 KE::Stub::ManagedObjectReference* vmRef, KETypeCache* cache);

}  // namespace KE::Instance

#endif
