// SPDX-License-Identifier: MIT
//
// The library, from the text of a reply to the filled caches, by the operation that its sync thread
// calls for every reply. The server in front of it hands out a filter and answers nothing else.
#include "benchmarks/Checksum.h"
#include "benchmarks/Contender.h"
#include "datasync/DataSyncConstants.h"
#include "datasync/KEDataSyncImpl.h"
#include "foundation/KEMutexGuard.h"
#include "service/call/KEMethod.h"
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

class FilterServer final : public KE::Service::KEMethod {
 public:
  using KEMethod::Invoke;
  void Invoke(const char*, const char*, KELib::Xml::KEXmlBuffer& body, KEString& result) override {
    body.Clear();
    result =
        (std::string("<returnval type=\"PropertyFilter\">") + kFilter + "</returnval>").c_str();
  }
  void Invoke(const char*, const char*, const char*, const char*, KEString&) override {}
};

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

class LibraryContender final : public Contender {
 public:
  LibraryContender() {
    KEString type("PropertyCollector"), id("collector-1");
    collector.type = type;
    collector.value = id;
    sync.Init(&server, &collector);
    SetUp();
  }

  void Apply(Text text) override {
    KEString reply;
    reply.Attach(text.characters.release());
    KELib::Xml::KEXmlReader reader(reply, false, 0);
    KE::Service::UpdateInfo update(KE::Service::Val, nullptr);
    sync.UpdateSetToCache(update, reader);
  }

  std::uint64_t Checksum() override {
    std::uint64_t sum = 0;
    ForEach<ZORBEL_VMComputerSystem>(
        kMachines, [&](auto key, auto& machine) { sum += HashMachine(key, machine); });
    ForEach<ZORBEL_ORXComputerSystem>(kHosts,
                                      [&](auto key, auto& host) { sum += HashHost(key, host); });
    return sum;
  }

  std::size_t Walk() override {
    std::size_t sum = 0;
    ForEach<ZORBEL_VMComputerSystem>(kMachines, [&](auto, auto& machine) {
      sum += machine.ElementName.Length();
      if (const auto* link = LinkOf(machine)) sum += link->Antecedent->ElementName.Length();
    });
    return sum;
  }

  void Drop() override {
    sync.GetCache()->Clear();
    CreateCaches();
  }

 private:
  static constexpr const char* kMachines = "ZORBEL_VMComputerSystem";
  static constexpr const char* kHosts = "ZORBEL_ORXComputerSystem";

  void SetUp() {
    KELib::KEVector<KEString> list;
    for (const char* element : {"_p_", "_o_", "VirtualMachine", "name"}) {
      list.Add(KEString(element));
    }
    sync.CreatePropFilter(&collector, list, nullptr);
    CreateCaches();
  }

  void CreateCaches() {
    for (const char* name : {kMachines, kHosts}) {
      KEString type(name);
      sync.GetCache()->CreateDataCache(type);
    }
  }

  template <typename Stub, typename Visit>
  void ForEach(const char* typeName, Visit visit) {
    KEString type(typeName);
    KEDataCache* cache = sync.GetCache()->GetDataCache(type);
    KELib::KEMutexGuard guard(cache->GetMutex());
    for (auto it = cache->Iterator(); !it.End(); ++it) {
      visit(it->key.Cstr(), static_cast<Stub&>(*it->value));
    }
  }

  FilterServer server;
  KE::Stub::ManagedObjectReference collector;
  KE::Service::KEDataSyncImpl sync;
};

}  // namespace

std::unique_ptr<Contender> MakeLibraryContender() {
  return std::make_unique<LibraryContender>();
}

}  // namespace bench
