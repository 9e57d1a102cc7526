// SPDX-License-Identifier: MIT
#include "datasync/MethodDataSyncInfo.h"

#include "datasync/WaiterHolder.h"

namespace KE::Service {

MethodDataSyncInfo::MethodDataSyncInfo() = default;
MethodDataSyncInfo::~MethodDataSyncInfo() = default;

}  // namespace KE::Service
