// SPDX-License-Identifier: MIT
#include "http/Interrupter.h"

#include "foundation/KEMutexGuard.h"
#include "http/SocketRegistry.h"

namespace KELib {
namespace Http {

Interrupter::Registration::Registration(Interrupter* interrupter, SocketRegistry& ofTheHandle)
    : owner(interrupter), sockets(ofTheHandle) {
  sockets.Admit();
  if (owner == nullptr) return;
  KEMutexGuard guard(&owner->mutex);
  next = owner->registrations;
  owner->registrations = this;
  if (owner->interrupting) sockets.Cut();
}

Interrupter::Registration::~Registration() {
  if (owner == nullptr) return;
  KEMutexGuard guard(&owner->mutex);
  Registration** link = &owner->registrations;
  while (*link != this) link = &(*link)->next;
  *link = next;
}

void Interrupter::Interrupt() {
  KEMutexGuard guard(&mutex);
  interrupting = true;
  for (Registration* one = registrations; one != nullptr; one = one->next) one->sockets.Cut();
}

void Interrupter::Resume() {
  KEMutexGuard guard(&mutex);
  interrupting = false;
}

bool Interrupter::IsInterrupting() const {
  KEMutexGuard guard(&mutex);
  return interrupting;
}

}  // namespace Http
}  // namespace KELib
