// SPDX-License-Identifier: MIT
//
// The configuration document that is used where none is given.
#ifndef KECPP_CONFIG_DEFAULTCONFIG_H
#define KECPP_CONFIG_DEFAULTCONFIG_H

#include "foundation/KEExport.h"

namespace KE::Service {

extern KECPP_API const char* const DEFAULT_CONFIG_CONTENT;

}  // namespace KE::Service

#endif
