// SPDX-License-Identifier: MIT
//
// The library ends the process with status 0 when the management daemon has gone or was restarted.
// A program that promises status 0 only for an inventory that was read watches its own end.
#ifndef KECPP_TOOLS_COMMON_PROCESSEND_H
#define KECPP_TOOLS_COMMON_PROCESSEND_H

namespace tools {

// While a guard exists, an exit that main did not order is reported on standard error, and its
// status becomes 1 unless the inventory was read. At most one guard in a process.
class ProcessEndGuard {
 public:
  // `program` is the name in the message, a constant.
  explicit ProcessEndGuard(const char* program);
  ~ProcessEndGuard();
  ProcessEndGuard(const ProcessEndGuard&) = delete;
  ProcessEndGuard& operator=(const ProcessEndGuard&) = delete;
};

// The inventory was read and shown. Any thread.
void NoteInventoryRead();

}  // namespace tools

#endif
