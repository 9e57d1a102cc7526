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

constexpr PropertyRow INDICATION[] = {
    Text("IndicationIdentifier", nullptr, "An identifier that no other indication has."),
    List("CorrelatedIndications", CimType::String, nullptr,
         "The identifiers of indications that belong to it."),
    Value("IndicationTime", CimType::DateTime, nullptr, "When it was made."),
    Enumeration("PerceivedSeverity", SEVERITY, nullptr, "How grave it is."),
    Text("OtherSeverity", nullptr, "How grave it is, in words."),
    Text("IndicationFilterName", nullptr, "The name of the filter that it passed."),
    Text("SequenceContext", nullptr, "What its number counts in."),
    Value("SequenceNumber", CimType::SInt64, nullptr, "Its number among those of the context."),
};
constexpr PropertyRow INST_INDICATION[] = {
    Required(Embedded(Text("SourceInstance", nullptr, "The instance that changed."))),
    Text("SourceInstanceModelPath", nullptr, "The path of the instance."),
    Text("SourceInstanceHost", nullptr, "The host that the agent runs on."),
};
constexpr PropertyRow INST_MODIFICATION[] = {
    Required(Embedded(Text("PreviousInstance", nullptr, "The instance as it was before."))),
};
constexpr PropertyRow FILTER[] = {
    SYSTEM_CLASS,
    SYSTEM_NAME,
    CREATION_CLASS,
    Key("Name", nullptr, "The name of the filter."),
    Writable(Text("SourceNamespace", nullptr, "The namespace of the changes.")),
    Writable(List("SourceNamespaces", CimType::String, nullptr, "The namespaces of the changes.")),
    Writable(Required(Text("Query", nullptr, "Which changes are wanted."))),
    Writable(Required(Text("QueryLanguage", nullptr, "The language of the query."))),
    Value("IndividualSubscriptionSupported", CimType::Boolean, nullptr,
          "Whether a subscription may name it."),
};
constexpr PropertyRow DESTINATION[] = {
    SYSTEM_CLASS,
    SYSTEM_NAME,
    CREATION_CLASS,
    Key("Name", nullptr, "The name of the destination."),
    Writable(Enumeration("PersistenceType", PERSISTENCE_TYPE, nullptr, "How long it is there.")),
    Writable(Text("Destination", nullptr, "The URL of the listener.")),
    Enumeration("Protocol", LISTENER_PROTOCOL, nullptr, "How indications are sent."),
};
constexpr PropertyRow XML_DESTINATION[] = {
    Writable(Required(Text("Destination", nullptr, "The URL of the listener."))),
};
constexpr PropertyRow ABSTRACT_SUBSCRIPTION[] = {
    End("Filter", "CIM_ManagedElement", "Which changes are wanted."),
    End("Handler", "CIM_ListenerDestination", "Where they are sent."),
    Enumeration("OnFatalErrorPolicy", FATAL_ERROR_POLICY, nullptr,
                "What becomes of it when indications cannot be sent."),
    Writable(Enumeration("SubscriptionState", SUBSCRIPTION_STATE, nullptr,
                         "Whether indications are sent.")),
    Value("TimeOfLastStateChange", CimType::DateTime, nullptr, "When the state changed."),
    Writable(Value("SubscriptionDuration", CimType::UInt64, nullptr,
                   "Seconds from its start after which it goes.")),
    Value("SubscriptionStartTime", CimType::DateTime, nullptr, "When it was made."),
    Enumeration("RepeatNotificationPolicy", REPEAT_POLICY, nullptr,
                "What becomes of repeated indications."),
    Writable(Text("SubscriptionInfo", nullptr, "Free text of the client's.")),
};
constexpr PropertyRow SUBSCRIPTION[] = {
    End("Filter", "CIM_IndicationFilter", "Which changes are wanted."),
    End("Handler", "CIM_ListenerDestination", "Where they are sent."),
};
constexpr PropertyRow SERVICE[] = {
    Value("FilterCreationEnabled", CimType::Boolean, nullptr, "Whether clients make filters."),
    Value("DeliveryRetryAttempts", CimType::UInt16, nullptr, "How often sending is tried again."),
    Value("DeliveryRetryInterval", CimType::UInt32, nullptr, "Seconds before it is tried again."),
    Enumeration("SubscriptionRemovalAction", REMOVAL_ACTION, nullptr,
                "What becomes of subscriptions whose listener does not answer."),
    Value("SubscriptionRemovalTimeInterval", CimType::UInt32, nullptr,
          "Seconds without an answer after which that happens."),
};
constexpr PropertyRow CAPABILITIES[] = {
    Key("InstanceID", nullptr, "An identifier that no other instance has."),
};
constexpr PropertyRow SERVICE_CAPABILITIES[] = {
    Value("FilterCreationEnabledIsSettable", CimType::Boolean, nullptr, "Whether it is settable."),
    Value("DeliveryRetryAttemptsIsSettable", CimType::Boolean, nullptr, "Whether it is settable."),
    Value("DeliveryRetryIntervalIsSettable", CimType::Boolean, nullptr, "Whether it is settable."),
    Value("SubscriptionRemovalActionIsSettable", CimType::Boolean, nullptr,
          "Whether it is settable."),
    Value("SubscriptionRemovalTimeIntervalIsSettable", CimType::Boolean, nullptr,
          "Whether it is settable."),
    Value("MaxListenerDestinations", CimType::UInt16, nullptr, "Destinations that there may be."),
    Value("MaxActiveSubscriptions", CimType::UInt16, nullptr, "Subscriptions that there may be."),
    Value("SubscriptionsPersisted", CimType::Boolean, nullptr,
          "Whether subscriptions are kept when the agent ends."),
};
constexpr PropertyRow ELEMENT_CAPABILITIES[] = {
    End("ManagedElement", "CIM_ManagedElement", "The element."),
    End("Capabilities", "CIM_Capabilities", "What it can do."),
};
constexpr PropertyRow AFFECTS[] = {
    End("AffectedElement", "CIM_ManagedElement", "The element."),
    End("AffectingElement", "CIM_Service", "The service that has an effect on it."),
};

constexpr ClassRow Indication(const char* name, const char* parent, Properties properties,
                              const char* description, bool isAbstract = false) {
  ClassRow row = Class(name, parent, properties, description, EVERYWHERE, isAbstract);
  row.isIndication = true;
  return row;
}

constexpr ClassRow CLASSES[] = {
    Indication("CIM_Indication", nullptr, INDICATION, "Something that happened.", true),
    Indication("CIM_InstIndication", "CIM_Indication", INST_INDICATION,
               "An instance came, went or changed.", true),
    Indication("CIM_InstCreation", "CIM_InstIndication", {}, "An instance came."),
    Indication("CIM_InstDeletion", "CIM_InstIndication", {}, "An instance went."),
    Indication("CIM_InstModification", "CIM_InstIndication", INST_MODIFICATION,
               "An instance changed."),
    InteropClass("CIM_IndicationFilter", "CIM_ManagedElement", FILTER,
                 "Which changes a client wants."),
    InteropClass("CIM_ListenerDestination", "CIM_ManagedElement", DESTINATION,
                 "Where indications are sent."),
    InteropClass("CIM_ListenerDestinationCIMXML", "CIM_ListenerDestination", XML_DESTINATION,
                 "A listener that takes CIM-XML over HTTP."),
    InteropAssociation("CIM_AbstractIndicationSubscription", nullptr, ABSTRACT_SUBSCRIPTION,
                       "The wish to get indications.", true),
    InteropAssociation("CIM_IndicationSubscription", "CIM_AbstractIndicationSubscription",
                       SUBSCRIPTION, "A filter and a listener that gets what passes it."),
    InteropClass("CIM_IndicationService", "CIM_Service", SERVICE, "What sends indications."),
    InteropClass("CIM_Capabilities", "CIM_ManagedElement", CAPABILITIES, "What an element can do.",
                 true),
    InteropClass("CIM_IndicationServiceCapabilities", "CIM_Capabilities", SERVICE_CAPABILITIES,
                 "What an indication service can do."),
    InteropAssociation("CIM_ElementCapabilities", nullptr, ELEMENT_CAPABILITIES,
                       "An element and what it can do."),
    InteropAssociation("CIM_ServiceAffectsElement", nullptr, AFFECTS,
                       "A service and an element that it has an effect on."),
};

}  // namespace

ClassTable IndicationClasses() {
  return {CLASSES, std::size(CLASSES)};
}

}  // namespace tools
