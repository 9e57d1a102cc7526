// SPDX-License-Identifier: MIT
#include "agent/ProcessEnd.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace inventory {
namespace {

std::atomic<bool> guarded{false};
std::atomic<bool> inventoryRead{false};

// Runs on whichever thread called exit, while the others go on: it touches nothing of theirs.
void OnExit() {
  if (!guarded) return;
  std::fputs("kecpp-inventory: the management daemon has gone, ending with it\n", stderr);
  if (!inventoryRead) _exit(EXIT_FAILURE);
}

}  // namespace

ProcessEndGuard::ProcessEndGuard() {
  guarded = true;
  std::atexit(OnExit);
}

ProcessEndGuard::~ProcessEndGuard() {
  guarded = false;
}

void NoteInventoryRead() {
  inventoryRead = true;
}

}  // namespace inventory
