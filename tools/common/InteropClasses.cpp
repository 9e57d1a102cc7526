// SPDX-License-Identifier: MIT
#include <iterator>

#include "tools/common/ClassTables.h"
#include "tools/common/ValueMaps.h"

namespace tools {
namespace {

constexpr PropertyRow SYSTEM_CLASS =
    Key("SystemCreationClassName", nullptr, "The class of the system that it is on.");
constexpr PropertyRow SYSTEM_NAME =
    Key("SystemName", nullptr, "The name of the system that it is on.");
constexpr PropertyRow CREATION_CLASS =
    Key(CREATION_CLASS_NAME, nullptr, "The class that the instance was made of.");

constexpr PropertyRow SERVICE[] = {
    SYSTEM_CLASS,
    SYSTEM_NAME,
    CREATION_CLASS,
    Key("Name", nullptr, "The name of the service."),
    Value("Started", CimType::Boolean, nullptr, "Whether the service runs."),
};
constexpr PropertyRow OBJECT_MANAGER[] = {
    Value("GatherStatisticalData", CimType::Boolean, nullptr, "Whether statistics are kept."),
};
constexpr PropertyRow NAMESPACE[] = {
    SYSTEM_CLASS,
    SYSTEM_NAME,
    Key("ObjectManagerCreationClassName", nullptr, "The class of the server."),
    Key("ObjectManagerName", nullptr, "The name of the server."),
    CREATION_CLASS,
    Key("Name", nullptr, "The name of the namespace, as requests have it."),
    Required(Value("ClassInfo", CimType::UInt16, nullptr, "0: not known.")),
    Value("ClassType", CimType::UInt16, nullptr, "2: the classes are CIM's."),
};
constexpr PropertyRow ACCESS_POINT[] = {
    SYSTEM_CLASS,
    SYSTEM_NAME,
    CREATION_CLASS,
    Key("Name", nullptr, "The name of the access point."),
};
constexpr PropertyRow MECHANISM[] = {
    Enumeration("CommunicationMechanism", COMMUNICATION_MECHANISM, nullptr,
                "How requests are written."),
    Enumerations("FunctionalProfilesSupported", FUNCTIONAL_PROFILES, nullptr,
                 "The groups of operations that are served."),
    Value("MultipleOperationsSupported", CimType::Boolean, nullptr,
          "Whether a message may hold several requests."),
    Enumerations("AuthenticationMechanismsSupported", AUTHENTICATION, nullptr,
                 "How a client says who it is."),
    Enumerations("AdvertiseTypes", ADVERTISE_TYPES, nullptr, "How it makes itself known."),
    Text("Version", nullptr, "The version of the protocol."),
};
constexpr PropertyRow XML_MECHANISM[] = {
    Required(Value("CIMValidated", CimType::Boolean, nullptr,
                   "Whether requests are validated by the DTD.")),
};
constexpr PropertyRow SPECIFICATION[] = {
    Key("InstanceID", nullptr, "An identifier that no other instance has."),
    Required(Enumeration("SpecificationType", SPECIFICATION_TYPE, nullptr,
                         "What kind of specification it is.")),
    Required(Enumeration("RegisteredOrganization", ORGANIZATION, nullptr,
                         "Who published the specification.")),
    Required(Text("RegisteredName", nullptr, "The name of the specification.")),
    Required(Text("RegisteredVersion", nullptr, "The version of the specification.")),
    Required(Enumerations("AdvertiseTypes", ADVERTISE_TYPES, nullptr,
                          "How the implementation makes itself known.")),
};
constexpr PropertyRow NAMESPACE_IN_MANAGER[] = {
    End("Antecedent", "CIM_ObjectManager", "The server."),
    End("Dependent", "CIM_Namespace", "A namespace that it serves."),
};
constexpr PropertyRow HOSTED_SERVICE[] = {
    End("Antecedent", "CIM_System", "The system."),
    End("Dependent", "CIM_Service", "A service that runs on it."),
};
constexpr PropertyRow SERVICE_ACCESS[] = {
    End("Antecedent", "CIM_Service", "The service."),
    End("Dependent", "CIM_ServiceAccessPoint", "A way to reach it."),
};
constexpr PropertyRow MECHANISM_FOR_MANAGER[] = {
    End("Antecedent", "CIM_ObjectManager", "The server."),
    End("Dependent", "CIM_ObjectManagerCommunicationMechanism", "A way to reach it."),
};
constexpr PropertyRow CONFORMS[] = {
    End("ConformantStandard", "CIM_RegisteredProfile", "The profile."),
    End("ManagedElement", "CIM_ManagedElement", "An element that conforms to it."),
};
constexpr PropertyRow REFERENCED[] = {
    End("Antecedent", "CIM_RegisteredProfile", "The profile that is referenced."),
    End("Dependent", "CIM_RegisteredProfile", "The profile that references it."),
};

constexpr ClassRow CLASSES[] = {
    InteropClass("CIM_Service", "CIM_EnabledLogicalElement", SERVICE, "A service.", true),
    InteropClass("CIM_WBEMService", "CIM_Service", {}, "A service of a CIM server."),
    InteropClass("CIM_ObjectManager", "CIM_WBEMService", OBJECT_MANAGER, "A CIM server."),
    InteropClass("CIM_Namespace", "CIM_ManagedElement", NAMESPACE, "A namespace of a CIM server."),
    InteropClass("CIM_ServiceAccessPoint", "CIM_EnabledLogicalElement", ACCESS_POINT,
                 "A way to reach a service."),
    InteropClass("CIM_ObjectManagerCommunicationMechanism", "CIM_ServiceAccessPoint", MECHANISM,
                 "A way to reach a CIM server."),
    InteropClass("CIM_CIMXMLCommunicationMechanism", "CIM_ObjectManagerCommunicationMechanism",
                 XML_MECHANISM, "CIM operations over HTTP."),
    InteropClass("CIM_RegisteredSpecification", "CIM_ManagedElement", SPECIFICATION,
                 "A specification that is implemented."),
    InteropClass("CIM_RegisteredProfile", "CIM_RegisteredSpecification", {},
                 "A profile that is implemented."),
    InteropAssociation("CIM_NamespaceInManager", "CIM_Dependency", NAMESPACE_IN_MANAGER,
                       "A CIM server and a namespace of it."),
    InteropAssociation("CIM_HostedService", "CIM_HostedDependency", HOSTED_SERVICE,
                       "A system and a service that runs on it."),
    InteropAssociation("CIM_ServiceAccessBySAP", "CIM_Dependency", SERVICE_ACCESS,
                       "A service and a way to reach it."),
    InteropAssociation("CIM_CommMechanismForManager", "CIM_ServiceAccessBySAP",
                       MECHANISM_FOR_MANAGER, "A CIM server and a way to reach it."),
    InteropAssociation("CIM_ElementConformsToProfile", nullptr, CONFORMS,
                       "A profile and an element that conforms to it."),
    InteropAssociation("CIM_ReferencedProfile", "CIM_Dependency", REFERENCED,
                       "A profile that references another one."),
};

}  // namespace

ClassTable InteropClasses() {
  return {CLASSES, std::size(CLASSES)};
}

}  // namespace tools
