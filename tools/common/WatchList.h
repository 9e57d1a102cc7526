// SPDX-License-Identifier: MIT
//
// The property lists of this tool's watches: which types and properties, how to walk there from the
// root object, and which caches hold the result.
#ifndef KECPP_TOOLS_COMMON_WATCHLIST_H
#define KECPP_TOOLS_COMMON_WATCHLIST_H

#include <kecpp.h>

namespace tools {

// Hosts and machines anywhere below a root "Folder". `list` is empty before.
void ListSystems(KELib::KEVector<KELib::KEString>& list);

// Privileges, roles and identities of a root "AuthorizationManager". `list` is empty before.
void ListAuthorization(KELib::KEVector<KELib::KEString>& list);

}  // namespace tools

#endif
