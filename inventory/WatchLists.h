// SPDX-License-Identifier: MIT
//
// What is watched: types and properties, how to get to their objects from a root object, and the
// caches that hold the result.
#ifndef KECPP_INVENTORY_WATCHLISTS_H
#define KECPP_INVENTORY_WATCHLISTS_H

#include <kecpp.h>

namespace kecpp {

// Hosts and machines anywhere below a root "Folder". `list` is empty before.
void ListSystems(KELib::KEVector<KELib::KEString>& list);

// Privileges and roles of a root "AuthorizationManager". `list` is empty before.
void ListAuthorization(KELib::KEVector<KELib::KEString>& list);

// Identities and who has which role, of the same root, which a method of the daemon answers: a list
// apart, since the waiter of a list with properties does not wait for its methods.
void ListPermissions(KELib::KEVector<KELib::KEString>& list);

}  // namespace kecpp

#endif
