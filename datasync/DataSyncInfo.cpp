// SPDX-License-Identifier: MIT
#include "datasync/DataSyncInfo.h"

#include "datasync/WaiterHolder.h"

namespace KE::Service {

DataSyncInfo::DataSyncInfo() = default;
DataSyncInfo::~DataSyncInfo() = default;

}  // namespace KE::Service
