// SPDX-License-Identifier: MIT
#include "benchmarks/PublicPath.h"

#include <stdexcept>

#include "foundation/KEString.h"
#include "foundation/KEVector.h"

namespace bench {

using KELib::KEString;

PublicPath::PublicPath(const std::string& url) {
  KEString none, target(url.c_str());
  client.reset(KE::Service::CreateClient(none, none, none, none, target, 0, false));
  if (client == nullptr) throw std::runtime_error("no SOAP client");
  method.reset(KE::Service::CreateMethod(client.get()));
  collector.type = "PropertyCollector";
  collector.value = "collector-1";
  sync.reset(KE::Service::CreateDataSync(method.get(), &collector));
}

PublicPath::~PublicPath() {
  sync->Cleanup();
}

void PublicPath::Watch() {
  KELib::KEVector<KEString> list;
  for (const char* element : {"_p_",
                              "_o_",
                              "VirtualMachine",
                              "name",
                              "config.annotation",
                              "config.uuid",
                              "config.files.vmPathName",
                              "runtime.powerState",
                              "runtime.host",
                              "config.guestFullName",
                              "guest.hostName",
                              "guest.ipAddress",
                              "_p_",
                              "_o_",
                              "HostSystem",
                              "name",
                              "vm",
                              "_co_",
                              "ZORBEL_VMComputerSystem",
                              "ZORBEL_ORXComputerSystem"}) {
    list.Add(KEString(element));
  }
  KE::Stub::ManagedObjectReference root;
  root.type = "Folder";
  root.value = "root";
  sync->SetupDataSync(&root, list, nullptr);
}

}  // namespace bench
