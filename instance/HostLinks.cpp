// SPDX-License-Identifier: MIT
#include "instance/HostLinks.h"

#include <memory>

#include "foundation/KEException.h"
#include "instance/ChangeHub.h"
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

constexpr unsigned int ZORBEL_HostedDependency::*kPlace = &ZORBEL_HostedDependency::originIndex;

// Throws when the machine's list exists but is empty.
ZORBEL_HostedDependency* LinkOf(ZORBEL_VMComputerSystem& machine) {
  const KE::Stub::AssocList& slots = machine.HostedDependencies;
  if (slots == nullptr) return nullptr;
  if (slots->Count() == 0) throw KELib::IndexOutOfBoundsException("IndexOutOfBoundsException");
  return StubCast<ZORBEL_HostedDependency>(slots->Get(0));
}

void MakeSlot(KE::Stub::AssocList& slots) {
  if (slots != nullptr) return;
  auto made = std::make_unique<KE::Stub::AssocVector>(2);  // a vector keeps one slot to spare
  made->Add(nullptr);
  slots = std::move(made);
}

}  // namespace

// Everything that can fail comes before the first change.
void LinkToHost(ZORBEL_VMComputerSystem& machine, ZORBEL_ORXComputerSystem& host, OldLink old,
                ChangeHub* changes) {
  ZORBEL_HostedDependency* const before = LinkOf(machine);
  if (before != nullptr && before->Antecedent == &host) return;
  std::unique_ptr<ZORBEL_HostedDependency> made;
  if (before == nullptr || old == OldLink::replaced) {
    made.reset(KE::Stub::CreateZORBEL_HostedDependency());
  }
  ZORBEL_HostedDependency* const link = made != nullptr ? made.get() : before;
  MakeSlot(machine.HostedDependencies);

  ZORBEL_ORXComputerSystem* oldHost = before != nullptr ? before->Antecedent : nullptr;
  KE::Stub::AssocVector* oldList = oldHost != nullptr ? oldHost->HostedDependencies.get() : nullptr;
  unsigned int oldPlace =
      0;  // found first: a link that moves gets its new place when it is appended
  if (oldList != nullptr) oldPlace = KE::Stub::PlaceIn(*oldList, before, kPlace);
  KE::Stub::Append(host.HostedDependencies, link, kPlace);
  if (oldList != nullptr) KE::Stub::TakeOutAt(*oldList, oldPlace, kPlace);

  link->Antecedent = &host;
  link->Dependent = &machine;
  KELib::Stub::KEAssocStubBase*& slot = machine.HostedDependencies->Get(0);
  if (slot != link) delete slot;
  slot = link;
  made.release();
  if (changes != nullptr) changes->Changed(&machine, &host, oldHost);
}

}  // namespace KE::Instance
