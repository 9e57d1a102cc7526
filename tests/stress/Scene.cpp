// SPDX-License-Identifier: MIT
#include "stress/Scene.h"

namespace stress {

using Lock = std::unique_lock<std::mutex>;

Turnstile::Stay::Stay(Turnstile& where) : turnstile(where) {
  Lock lock(turnstile.mutex);
  turnstile.changed.wait(lock, [this] { return !turnstile.closed; });
  ++turnstile.inside;
}

Turnstile::Stay::~Stay() {
  const Lock lock(turnstile.mutex);
  --turnstile.inside;
  turnstile.changed.notify_all();
}

void Turnstile::Close() {
  Lock lock(mutex);
  closed = true;
  changed.wait(lock, [this] { return inside == 0; });
}

void Turnstile::Open() {
  const Lock lock(mutex);
  closed = false;
  changed.notify_all();
}

}  // namespace stress
