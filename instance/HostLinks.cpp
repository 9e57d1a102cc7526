// SPDX-License-Identifier: MIT
#include "instance/HostLinks.h"

#include <memory>

#include "foundation/KEException.h"
#include "stub/base/StubCast.h"
#include "stub/classes/AssocList.h"
#include "stub/classes/ZORBEL_HostedDependency.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"

namespace KE::Instance {

namespace {

using KE::Stub::ZORBEL_HostedDependency;
using KE::Stub::ZORBEL_ORXComputerSystem;
using KE::Stub::ZORBEL_VMComputerSystem;
using KELib::Stub::StubCast;

ZORBEL_HostedDependency* LinkOf(ZORBEL_VMComputerSystem* vm) {
  if (vm->HostedDependencies == nullptr || vm->HostedDependencies->Count() == 0) return nullptr;
  return StubCast<ZORBEL_HostedDependency>(vm->HostedDependencies->Get(0));
}

// Links a machine to a host to which it is not linked yet; an older link moves over. Everything
// that can fail comes before the first change.
void Link(ZORBEL_VMComputerSystem* vm, ZORBEL_HostedDependency* link,
          ZORBEL_ORXComputerSystem* host) {
  if (vm->HostedDependencies != nullptr && vm->HostedDependencies->Count() == 0) {
    throw KELib::IndexOutOfBoundsException("IndexOutOfBoundsException");
  }
  std::unique_ptr<ZORBEL_HostedDependency> made;
  if (link == nullptr) {
    made.reset(KE::Stub::CreateZORBEL_HostedDependency());
    link = made.get();
  }
  if (vm->HostedDependencies == nullptr) {
    auto slots = std::make_unique<KE::Stub::AssocVector>(2);  // a vector keeps one slot to spare
    slots->Add(nullptr);
    vm->HostedDependencies = std::move(slots);
  }
  ZORBEL_ORXComputerSystem* oldHost = link->Antecedent;
  KE::Stub::AssocVector* oldList = oldHost != nullptr ? oldHost->HostedDependencies.get() : nullptr;
  const unsigned int oldPlace = oldList != nullptr ? KE::Stub::PlaceInOrigin(*oldList, link) : 0;
  KE::Stub::AppendToOrigin(host->HostedDependencies, link);
  if (oldList != nullptr && oldPlace < oldList->Count()) oldList->RemoveAt(oldPlace);
  link->Antecedent = host;
  link->Dependent = vm;
  KELib::Stub::KEAssocStubBase*& slot = vm->HostedDependencies->Get(0);
  if (slot != link) delete slot;
  slot = link;
  made.release();
}

}  // namespace

void LinkToHost(ZORBEL_VMComputerSystem& machine, ZORBEL_ORXComputerSystem& host) {
  ZORBEL_HostedDependency* link = LinkOf(&machine);
  if (link == nullptr || link->Antecedent != &host) Link(&machine, link, &host);
}

}  // namespace KE::Instance
