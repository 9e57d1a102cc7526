// SPDX-License-Identifier: MIT
//
// The unit of work that the sync thread executes.
//
// Ownership: does not own the data sync, which waits for the thread's last word before it dies.
#ifndef KECPP_DATASYNC_KEDATASYNCWORKIMPL_H
#define KECPP_DATASYNC_KEDATASYNCWORKIMPL_H

#include "foundation/KEExport.h"
#include "foundation/KEWork.h"

namespace KE::Service {

class KEDataSyncImpl;

class KECPP_API KEDataSyncWorkImpl : public KELib::KEWork {
 public:
  // The loop of `dataSync`, which is not owned.
  explicit KEDataSyncWorkImpl(KEDataSyncImpl* dataSync);
  ~KEDataSyncWorkImpl() override;

  // Runs the loop. The return code is WORK_RET_SUCCESS, or WORK_RET_ERROR_BASE when an exception
  // escaped it. Never throws.
  void Execute() override;

 private:
  KEDataSyncImpl* dataSync;
};

}  // namespace KE::Service

#endif
