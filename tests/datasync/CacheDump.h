// SPDX-License-Identifier: MIT
//
// Writes down what the caches of a data sync hold, so that a test can compare it as a text.
#ifndef KECPP_TESTS_DATASYNC_CACHEDUMP_H
#define KECPP_TESTS_DATASYNC_CACHEDUMP_H

#include <string>

#include "foundation/KEString.h"

namespace KE::Instance {
class KETypeCache;
}

// One line for each stub, sorted: its kind and key, the texts that are not empty, and its partners
// as its own list of links gives them, so that each link shows in two lines. "ODD" marks a stub
// whose own name is not its key. Takes the mutex of every data cache.
std::string DumpCaches(KE::Instance::KETypeCache& types);

// The line of one object; empty when it is not cached.
std::string DumpObject(KE::Instance::KETypeCache& types, const char* className,
                       KELib::KEString& key);

#endif
