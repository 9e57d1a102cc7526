// SPDX-License-Identifier: MIT
#include "tools/agent/InteropModel.h"

#include <unistd.h>

#include <array>
#include <memory>
#include <utility>

#include "tools/agent/Namespaces.h"

namespace tools::agent {
namespace {

constexpr const char* SYSTEM = "CIM_ComputerSystem";
constexpr const char* MANAGER = "CIM_ObjectManager";
constexpr const char* MANAGER_NAME = "kecpp-agent";

// Values of enumerations.
constexpr const char* OK = "2";               // OperationalStatus
constexpr const char* ENABLED = "2";          // EnabledState
constexpr const char* NOT_APPLICABLE = "12";  // RequestedState
constexpr const char* CIM_XML = "2";          // CommunicationMechanism
constexpr const char* NOT_ADVERTISED = "2";   // AdvertiseTypes
constexpr const char* PROFILE = "2";          // SpecificationType
constexpr const char* DMTF = "2";             // RegisteredOrganization
constexpr const char* REMOVE = "2";           // SubscriptionRemovalAction

StoredInstance Make(const char* className) {
  return StoredInstance(*FindClass(className));
}

// Of what runs on the system of that name.
StoredInstance Make(const char* className, const std::string& host, const std::string& name) {
  StoredInstance made = Make(className);
  made.Set("SystemCreationClassName", SYSTEM)
      .Set("SystemName", host)
      .Set(CREATION_CLASS_NAME, className)
      .Set("Name", name)
      .Set("ElementName", name);
  return made;
}

StoredInstance& Enable(StoredInstance& element) {
  return element.Set("OperationalStatus", std::vector<std::string>{OK})
      .Set("EnabledState", ENABLED)
      .Set("RequestedState", NOT_APPLICABLE);
}

}  // namespace

InteropModel::InteropModel(const std::string& hostName, bool hasUsers,
                           const std::optional<Indications>& indications) {
  StoredInstance machine = Make(SYSTEM);
  machine.Set(CREATION_CLASS_NAME, SYSTEM)
      .Set("Name", hostName)
      .Set("NameFormat", "Other")
      .Set("ElementName", hostName)
      .Set("Description", "The machine that the agent runs on.");
  const Stored system = Add(std::move(Enable(machine)));
  StoredInstance server = Make(MANAGER, hostName, MANAGER_NAME);
  // Clients read the server's name and version from this text.
  server.Set("Description", "kecpp-agent version " KECPP_TOOLS_VERSION)
      .Set("Started", "TRUE")
      .Set("GatherStatisticalData", "FALSE");
  const Stored manager = Add(std::move(Enable(server)));
  Link("CIM_HostedService", "Antecedent", system, "Dependent", manager);
  AddNamespaces(hostName, manager);
  AddMechanism(hostName, manager, hasUsers, indications.has_value());
  // The profile of profiles conforms to itself: its central instances are the registrations.
  const Stored registration = AddProfile("Profile Registration", "1.1.0");
  Link("CIM_ElementConformsToProfile", "ConformantStandard", registration, "ManagedElement",
       registration);
  if (indications) AddIndications(hostName, system, *indications);
}

Stored InteropModel::Add(StoredInstance instance) {
  instances.push_back(std::make_shared<const StoredInstance>(std::move(instance)));
  return instances.back();
}

void InteropModel::Link(const char* type, const char* role, const Stored& target,
                        const char* partnerRole, const Stored& partner) {
  StoredInstance link = Make(type);
  link.Set(role, target).Set(partnerRole, partner);
  Add(std::move(link));
}

void InteropModel::AddNamespaces(const std::string& host, const Stored& manager) {
  for (const Namespace& row : NAMESPACES) {
    StoredInstance space = Make("CIM_Namespace", host, row.name);
    space.Set("ObjectManagerCreationClassName", MANAGER)
        .Set("ObjectManagerName", MANAGER_NAME)
        .Set("ClassInfo", "0")
        .Set("ClassType", "2");
    Link("CIM_NamespaceInManager", "Antecedent", manager, "Dependent", Add(std::move(space)));
  }
}

void InteropModel::AddMechanism(const std::string& host, const Stored& manager, bool hasUsers,
                                bool hasIndications) {
  StoredInstance mechanism = Make("CIM_CIMXMLCommunicationMechanism", host, "kecpp-agent:cim-xml");
  // Basic read, association traversal, queries, qualifier declaration, indications, pulled read and
  // queries.
  std::vector<std::string> groups = {"2", "6", "7", "8", "10", "12"};
  if (hasIndications) groups.insert(groups.begin() + 4, "9");
  mechanism.Set("CommunicationMechanism", CIM_XML)
      .Set("FunctionalProfilesSupported", std::move(groups))
      .Set("MultipleOperationsSupported", "FALSE")
      .Set("AuthenticationMechanismsSupported",
           std::vector<std::string>{hasUsers ? "3" : "2"})  // basic, none
      .Set("AdvertiseTypes", std::vector<std::string>{NOT_ADVERTISED})
      .Set("Version", "1.4")
      .Set("CIMValidated", "FALSE");
  Link("CIM_CommMechanismForManager", "Antecedent", manager, "Dependent",
       Add(std::move(Enable(mechanism))));
}

Stored InteropModel::AddProfile(const std::string& name, const std::string& version) {
  StoredInstance profile = Make("CIM_RegisteredProfile");
  profile.Set("InstanceID", "kecpp:" + name + ":" + version)
      .Set("ElementName", name)
      .Set("SpecificationType", PROFILE)
      .Set("RegisteredOrganization", DMTF)
      .Set("RegisteredName", name)
      .Set("RegisteredVersion", version)
      .Set("AdvertiseTypes", std::vector<std::string>{NOT_ADVERTISED});
  return Add(std::move(profile));
}

void InteropModel::AddIndications(const std::string& host, const Stored& system,
                                  const Indications& indications) {
  StoredInstance service = Make("CIM_IndicationService", host, "kecpp:indications");
  service.Set("Started", "TRUE")
      .Set("FilterCreationEnabled", "TRUE")
      .Set("DeliveryRetryAttempts", std::to_string(indications.retries))
      .Set("DeliveryRetryInterval", std::to_string(indications.retryInterval.count()))
      .Set("SubscriptionRemovalAction", REMOVE)
      .Set("SubscriptionRemovalTimeInterval", std::to_string(indications.removalInterval.count()));
  indicationService = Add(std::move(Enable(service)));
  Link("CIM_HostedService", "Antecedent", system, "Dependent", indicationService);
  StoredInstance capabilities = Make("CIM_IndicationServiceCapabilities");
  capabilities.Set("InstanceID", "kecpp:indications").Set("ElementName", "kecpp:indications");
  for (const char* settable :
       {"FilterCreationEnabledIsSettable", "DeliveryRetryAttemptsIsSettable",
        "DeliveryRetryIntervalIsSettable", "SubscriptionRemovalActionIsSettable",
        "SubscriptionRemovalTimeIntervalIsSettable"}) {
    capabilities.Set(settable, "FALSE");
  }
  capabilities.Set("MaxListenerDestinations", std::to_string(indications.mostDestinations))
      .Set("MaxActiveSubscriptions", std::to_string(indications.mostSubscriptions))
      .Set("SubscriptionsPersisted", indications.arePersistent ? "TRUE" : "FALSE");
  Link("CIM_ElementCapabilities", "ManagedElement", indicationService, "Capabilities",
       Add(std::move(capabilities)));
  Link("CIM_ElementConformsToProfile", "ConformantStandard", AddProfile("Indications", "1.2.2"),
       "ManagedElement", indicationService);
}

std::string LocalHostName() {
  std::array<char, 256> name = {};
  if (gethostname(name.data(), name.size() - 1) != 0 || name[0] == 0) return "localhost";
  return name.data();
}

}  // namespace tools::agent
