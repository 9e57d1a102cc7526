// SPDX-License-Identifier: MIT
//
// The operations on instances. They throw OperationError and NotReady.
#ifndef KECPP_AGENT_CIMXML_INSTANCEOPERATIONS_H
#define KECPP_AGENT_CIMXML_INSTANCEOPERATIONS_H

#include "agent/cimxml/Call.h"

namespace cimxml {

// All instances of a class and of those that derive from it, links of associations included.
void EnumerateInstances(const Call& call);
void EnumerateInstanceNames(const Call& call);

void GetInstance(const Call& call);

}  // namespace cimxml

#endif
