// SPDX-License-Identifier: MIT
//
// What this process takes of its machine, by the names that Prometheus gives to it.
#ifndef KECPP_TOOLS_COMMON_PROCESSFIGURES_H
#define KECPP_TOOLS_COMMON_PROCESSFIGURES_H

#include "tools/common/Exposition.h"

namespace tools {

void WriteProcessFigures(Exposition& out);

}  // namespace tools

#endif
