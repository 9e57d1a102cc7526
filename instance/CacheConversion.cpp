// SPDX-License-Identifier: MIT
#include "instance/CacheConversion.h"

#include <memory>
#include <string_view>

#include "instance/HostLinks.h"
#include "instance/KETypeCache.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/ManagedObjectReference.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"
#include "xml/KEXmlReader.h"
#include "xml/XmlConstants.h"

namespace KE::Instance {

namespace {

using KE::Stub::ZORBEL_ORXComputerSystem;
using KE::Stub::ZORBEL_VMComputerSystem;
using KELib::KEString;

struct StatusCode {
  std::string_view text;
  unsigned short code;
};

// Whether a text is that one, up to a NUL.
bool IsText(std::string_view text, std::string_view other) {
  const std::size_t length = other.size();
  return text.substr(0, length) == other && (text.size() == length || text[length] == '\0');
}

template <std::size_t N>
unsigned short CodeOf(std::string_view text, const StatusCode (&table)[N]) {
  for (const StatusCode& entry : table) {
    if (IsText(text, entry.text)) return entry.code;
  }
  return 0;
}

// A type without a data cache is a miss like any other: the agent does not watch that type.
KELib::Stub::KEStubBase* Find(KETypeCache* cache, const char* typeName, KEString& key) {
  KEString type(typeName);
  KEDataCache* data = cache->GetDataCache(type);
  if (data == nullptr) return nullptr;
  KELib::Stub::KEStubRef ref;
  data->GetVal(key, ref);
  return ref.GetData();
}

}  // namespace

void ConvertManagedObjectReference(const char* elementName, KELib::Xml::KEXmlReader& reader,
                                   KE::Stub::ManagedObjectReference*& ref) {
  std::unique_ptr<KE::Stub::ManagedObjectReference> made;
  if (ref == nullptr) made = std::make_unique<KE::Stub::ManagedObjectReference>();
  KE::Stub::ManagedObjectReference& target = ref != nullptr ? *ref : *made;
  KEString name;
  if (reader.InsideElementTag()) {
    reader.GetAttributeNameAndValue(name, target.type);
  } else {
    reader.GetElementAttributeNameAndValue(elementName, name, target.type);
  }
  if (name.Equals(KELib::Xml::XML_xsiType)) {
    name.Clear();
    target.type.Clear();
    reader.GetAttributeNameAndValue(name, target.type);
  }
  reader.GetElementValue(elementName, target.value);
  if (ref == nullptr) ref = made.release();
}

unsigned short CodeOfPowerState(std::string_view state) {
  static constexpr StatusCode kStates[] = {{"poweredOff", 10}, {"poweredOn", 2}, {"suspended", 15}};
  return CodeOf(state, kStates);
}

unsigned short CodeOfOverallStatus(std::string_view status) {
  static constexpr StatusCode kStatuses[] = {{"gray", 0}, {"green", 2}, {"red", 6}, {"yellow", 3}};
  return CodeOf(status, kStatuses);
}

void ConvertVMPowerState(KEString& state, unsigned short& code) {
  code = CodeOfPowerState(state.Cstr());
}

void ConvertHostOverallStatus(KEString& status, unsigned short& code) {
  code = CodeOfOverallStatus(status.Cstr());
}

void ChangeVMsHostRef(ZORBEL_VMComputerSystem* vm, KEString&, KEString& hostId,
                      KETypeCache* cache) {
  if (vm == nullptr) return;
  auto* host = dynamic_cast<ZORBEL_ORXComputerSystem*>(
      Find(cache, KE::Stub::ZORBEL_ORXComputerSystemClass, hostId));
  if (host != nullptr) LinkToHost(*vm, *host, OldLink::moved, cache->Listener());
}

void ChangeHostsVMRefs(ZORBEL_ORXComputerSystem* host, KE::Stub::ManagedObjectReference* vmRef,
                       KETypeCache* cache) {
  if (host == nullptr || vmRef == nullptr) return;
  auto* vm = dynamic_cast<ZORBEL_VMComputerSystem*>(
      Find(cache, KE::Stub::ZORBEL_VMComputerSystemClass, vmRef->value));
  if (vm != nullptr) LinkToHost(*vm, *host, OldLink::replaced, cache->Listener());
}

}  // namespace KE::Instance
