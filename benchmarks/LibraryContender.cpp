// SPDX-License-Identifier: MIT
#include "benchmarks/LibraryContender.h"

#include "benchmarks/Checksum.h"
#include "datasync/DataSyncConstants.h"
#include "foundation/KEMutexGuard.h"
#include "stub/base/KEStubRef.h"
#include "stub/classes/ZORBEL_HostedDependency.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"
#include "xml/KEXmlBuffer.h"
#include "xml/KEXmlReader.h"

namespace bench {

namespace {

using KE::Instance::KEDataCache;
using KE::Stub::ZORBEL_HostedDependency;
using KE::Stub::ZORBEL_ORXComputerSystem;
using KE::Stub::ZORBEL_VMComputerSystem;
using KELib::KEString;

constexpr const char* kMachines = "ZORBEL_VMComputerSystem";
constexpr const char* kHosts = "ZORBEL_ORXComputerSystem";

// The link that a stub holds in the first slot of its list; null when it has none.
ZORBEL_HostedDependency* LinkOf(ZORBEL_VMComputerSystem& machine) {
  if (machine.HostedDependencies == nullptr) return nullptr;
  return static_cast<ZORBEL_HostedDependency*>(machine.HostedDependencies->Get(0));
}

std::uint64_t HashMachine(const char* key, ZORBEL_VMComputerSystem& m) {
  const ZORBEL_HostedDependency* link = LinkOf(m);
  return HashObject({key, m.Name.Cstr(), m.ElementName.Cstr(), m.Description.Cstr(), m.UUID.Cstr(),
                     m.GuestFullName.Cstr(), m.GuestHostName.Cstr(), m.GuestIPAddress.Cstr(),
                     m.VMPathName.Cstr(), m.PowerState.Cstr(), m.MoRef.type.Cstr(),
                     m.MoRef.value.Cstr(), link != nullptr ? link->Antecedent->Name.Cstr() : ""},
                    m.OperationalStatus);
}

std::uint64_t HashHost(const char* key, ZORBEL_ORXComputerSystem& h) {
  std::uint64_t sum =
      HashObject({key, h.Name.Cstr(), h.ElementName.Cstr(), h.UUID.Cstr(), h.Vendor.Cstr(),
                  h.Model.Cstr(), h.MoRef.type.Cstr(), h.MoRef.value.Cstr()},
                 h.OperationalStatus);
  if (h.HostedDependencies == nullptr) return sum;
  for (unsigned int i = 0; i < h.HostedDependencies->Count(); ++i) {
    auto* link = static_cast<ZORBEL_HostedDependency*>(h.HostedDependencies->Get(i));
    if (link != nullptr) sum += HashObject({key, link->Dependent->Name.Cstr()}, 0);
  }
  return sum;
}

template <typename Stub, typename Visit>
void ForEach(KE::Instance::KETypeCache& types, const char* typeName, Visit visit) {
  KEString type(typeName);
  KEDataCache* cache = types.GetDataCache(type);
  KELib::KEMutexGuard guard(cache->GetMutex());
  for (auto it = cache->Iterator(); !it.End(); ++it) {
    visit(it->key.Cstr(), static_cast<Stub&>(*it->value));
  }
}

}  // namespace

void FilterServer::Invoke(const char*, const char*, KELib::Xml::KEXmlBuffer& body,
                          KEString& result) {
  body.Clear();
  result = (std::string("<returnval type=\"PropertyFilter\">") + kFilter + "</returnval>").c_str();
}

LibraryContender::LibraryContender() {
  collector.type = "PropertyCollector";
  collector.value = "collector-1";
  sync.Init(&server, &collector);
  KELib::KEVector<KEString> list;
  for (const char* element : {"_p_", "_o_", "VirtualMachine", "name"}) list.Add(KEString(element));
  sync.CreatePropFilter(&collector, list, nullptr);
  CreateCaches();
}

void LibraryContender::CreateCaches() {
  for (const char* name : {kMachines, kHosts}) {
    KEString type(name);
    Cache().CreateDataCache(type);
  }
}

void LibraryContender::Apply(Text text) {
  KEString reply;
  reply.Attach(text.characters.release());
  KELib::Xml::KEXmlReader reader;
  reader.SetInputOfLength(reply, static_cast<unsigned int>(text.length));
  KE::Service::UpdateInfo update(KE::Service::Val, nullptr);
  sync.UpdateSetToCache(update, reader);
}

std::uint64_t LibraryContender::Checksum() {
  std::uint64_t sum = 0;
  ForEach<ZORBEL_VMComputerSystem>(
      Cache(), kMachines, [&](auto key, auto& machine) { sum += HashMachine(key, machine); });
  ForEach<ZORBEL_ORXComputerSystem>(Cache(), kHosts,
                                    [&](auto key, auto& host) { sum += HashHost(key, host); });
  return sum;
}

std::size_t LibraryContender::Walk() {
  std::size_t sum = 0;
  ForEach<ZORBEL_VMComputerSystem>(Cache(), kMachines, [&](auto, auto& machine) {
    sum += machine.ElementName.Length();
    if (const auto* link = LinkOf(machine)) sum += link->Antecedent->ElementName.Length();
  });
  return sum;
}

void LibraryContender::Drop() {
  Cache().Clear();
  CreateCaches();
}

std::unique_ptr<Contender> MakeLibraryContender() {
  return std::make_unique<LibraryContender>();
}

std::unique_ptr<Contender> MakeLibraryContenderWithFeed() {
  return std::make_unique<LibraryContenderWithFeed>();
}

}  // namespace bench
