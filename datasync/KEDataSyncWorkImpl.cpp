// SPDX-License-Identifier: MIT
#include "datasync/KEDataSyncWorkImpl.h"

#include "datasync/KEDataSyncImpl.h"

namespace KE::Service {

KEDataSyncWorkImpl::KEDataSyncWorkImpl(KEDataSyncImpl* sync) : dataSync(sync) {}

KEDataSyncWorkImpl::~KEDataSyncWorkImpl() = default;

void KEDataSyncWorkImpl::Execute() {
  returnCode = KELib::WORK_RET_SUCCESS;
  if (!dataSync->RunThread()) returnCode = KELib::WORK_RET_ERROR_BASE;
}

}  // namespace KE::Service
