// SPDX-License-Identifier: MIT
//
// The library's log lines, kept instead of written: this executable's own system log.
//
// Thread safety: any thread.
#ifndef KECPP_TESTS_TORTURE_CAPTUREDLINES_H
#define KECPP_TESTS_TORTURE_CAPTUREDLINES_H

#include <string>

namespace torture {

// All lines since the last call, each with a line end.
std::string TakeLog();

}  // namespace torture

#endif
