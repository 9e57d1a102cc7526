// SPDX-License-Identifier: MIT
#include "instance/KECache.h"

namespace KE::Instance {

KECache::~KECache() = default;

}  // namespace KE::Instance
