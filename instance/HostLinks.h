// SPDX-License-Identifier: MIT
//
// Links a machine with its host.
#ifndef KECPP_INSTANCE_HOSTLINKS_H
#define KECPP_INSTANCE_HOSTLINKS_H

namespace KE::Stub {
class ZORBEL_ORXComputerSystem;
class ZORBEL_VMComputerSystem;
}  // namespace KE::Stub

namespace KE::Instance {

// Makes the machine's link to the host, or moves the one that it has. Constant time, however many
// machines the host has. The caller holds the mutexes of both caches.
// Throws IndexOutOfBoundsException, before anything is changed, when the machine's list exists but
// is empty.
void LinkToHost(KE::Stub::ZORBEL_VMComputerSystem& machine,
                KE::Stub::ZORBEL_ORXComputerSystem& host);

}  // namespace KE::Instance

#endif
