// SPDX-License-Identifier: MIT
#include "datasync/UpdateInfo.h"

namespace KE::Service {

UpdateInfo::UpdateInfo(const char* value, const char* arrayItem)
    : valueTag(value), arrayItemTag(arrayItem), filterRef(&filter), objRef(&obj) {}

}  // namespace KE::Service
