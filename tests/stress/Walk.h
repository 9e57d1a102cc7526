// SPDX-License-Identifier: MIT
//
// Walks through the caches as a careful reader does, and checks on the way what must hold at every
// moment: each object whole, both ends of each link agreeing, each key found again.
#ifndef KECPP_TESTS_STRESS_WALK_H
#define KECPP_TESTS_STRESS_WALK_H

#include <kecpp.h>

#include "stress/Board.h"
#include "stress/Tally.h"

namespace stress {

void WalkSystems(KE::Instance::KETypeCache& cache, Seat& seat, Tally& tally);
void WalkAuthorization(KE::Instance::KETypeCache& cache, Seat& seat, Tally& tally);

}  // namespace stress

#endif
