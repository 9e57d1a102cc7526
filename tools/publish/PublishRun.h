// SPDX-License-Identifier: MIT
//
// The program's two ways: to publish, and to print events.
#ifndef KECPP_TOOLS_PUBLISH_PUBLISHRUN_H
#define KECPP_TOOLS_PUBLISH_PUBLISHRUN_H

#include "tools/common/EndOfRun.h"
#include "tools/common/ServiceManager.h"
#include "tools/publish/PublishOptions.h"

namespace tools::publish {

// Both go on until the end of the run, connect again when the daemon is lost and say so on standard
// error. They are ready when the cluster has been made the same as the inventory for the first
// time, or when the daemon is connected. Publish throws Fenced, both std::exception.
void Publish(const PublishOptions& options, const EndOfRun& end, ServiceManager& manager);
void PrintEvents(const PublishOptions& options, const EndOfRun& end, ServiceManager& manager);

}  // namespace tools::publish

#endif
