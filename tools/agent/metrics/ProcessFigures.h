// SPDX-License-Identifier: MIT
//
// What this process takes of its machine, by the names that Prometheus gives to it.
#ifndef KECPP_TOOLS_AGENT_METRICS_PROCESSFIGURES_H
#define KECPP_TOOLS_AGENT_METRICS_PROCESSFIGURES_H

#include "tools/agent/metrics/Exposition.h"

namespace tools::agent {

void WriteProcessFigures(Exposition& out);

}  // namespace tools::agent

#endif
