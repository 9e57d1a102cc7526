// SPDX-License-Identifier: MIT
#include "tools/common/ProcessEnd.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace tools {
namespace {

std::atomic<const char*> guarded{nullptr};
std::atomic<bool> inventoryRead{false};

// Runs on the thread that called exit, while the others go on: it touches nothing that they use.
void OnExit() {
  const char* program = guarded;
  if (!program) return;
  std::fprintf(stderr, "%s: the management daemon has gone, ending with it\n", program);
  if (!inventoryRead) _exit(EXIT_FAILURE);
}

}  // namespace

ProcessEndGuard::ProcessEndGuard(const char* program) {
  guarded = program;
  std::atexit(OnExit);
}

ProcessEndGuard::~ProcessEndGuard() {
  guarded = nullptr;
}

void NoteInventoryRead() {
  inventoryRead = true;
}

}  // namespace tools
