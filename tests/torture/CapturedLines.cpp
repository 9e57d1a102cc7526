// SPDX-License-Identifier: MIT
#include "torture/CapturedLines.h"

#include "support/CapturedLog.h"
#include "torture/FailingCalls.h"

namespace torture {

std::string TakeLog() {
  std::string text;
  for (const CapturedLog::Line& line : CapturedLog::Lines()) text += line.text + "\n";
  CapturedLog::Clear();
  return text;
}

}  // namespace torture
