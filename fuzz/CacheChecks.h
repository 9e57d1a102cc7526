// SPDX-License-Identifier: MIT
//
// What must hold for filled caches at any time: every stub stands once and under its own key, and
// every link stands once in the list of each of its two ends, both of which are cached.
#ifndef KECPP_FUZZ_CACHECHECKS_H
#define KECPP_FUZZ_CACHECHECKS_H

namespace KE::Instance {
class KETypeCache;
}

namespace fuzz {

// Aborts with a message when something does not hold. Linear in the number of links.
void CheckCaches(KE::Instance::KETypeCache& types);

}  // namespace fuzz

#endif
