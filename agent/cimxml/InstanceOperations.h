// SPDX-License-Identifier: MIT
//
// The operations on instances. They throw OperationError and NotReady.
#ifndef KECPP_AGENT_CIMXML_INSTANCEOPERATIONS_H
#define KECPP_AGENT_CIMXML_INSTANCEOPERATIONS_H

#include "agent/cimxml/Call.h"

namespace cimxml {

// All instances of a class and of those that derive from it, links of associations included.
Content EnumerateInstances(const Call& call);
Content EnumerateInstanceNames(const Call& call);

Content GetInstance(const Call& call);

}  // namespace cimxml

#endif
