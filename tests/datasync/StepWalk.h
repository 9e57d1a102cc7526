// SPDX-License-Identifier: MIT
//
// Applies an update set by the data sync's single steps, as a program does that reads update sets
// itself. Another parser finds the values, so that no fault of the library's walk is repeated here.
#ifndef KECPP_TESTS_DATASYNC_STEPWALK_H
#define KECPP_TESTS_DATASYNC_STEPWALK_H

#include <string>

#include "datasync/KEDataSyncImpl.h"

namespace KE::Service {

// Which steps apply a list: the one for any value, the one for a whole list, or those for its items
// and for what it did not name.
enum class Steps { none, values, lists, items };

// Applies `set` up to the first filter that nobody watches. Throws what the steps throw.
void ApplyBySteps(KEDataSyncImpl& sync, const std::string& set, Steps steps);

}  // namespace KE::Service

#endif
