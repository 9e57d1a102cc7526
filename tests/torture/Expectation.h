// SPDX-License-Identifier: MIT
//
// Which error a refused call must lead to.
#ifndef KECPP_TESTS_TORTURE_EXPECTATION_H
#define KECPP_TESTS_TORTURE_EXPECTATION_H

#include <set>
#include <string>

#include "torture/FailingCalls.h"

namespace torture {

// The text that must be reported; empty when the refusal is overcome without a word.
std::string ExpectedText(const Refusal& refusal);

// The four digits in `text`, a set-up error's; empty when it has none.
std::string SetupCode(const std::string& text);

// All set-up codes that refused calls can lead to.
const std::set<std::string>& AllSetupCodes();

}  // namespace torture

#endif
