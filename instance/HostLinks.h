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

class ChangeHub;

// What becomes of a machine's link to another host.
enum class OldLink { moved, replaced };

// Links the machine to the host unless it is linked to it. Constant time, however many machines the
// hosts have. The caller holds the mutexes of both caches. `changes`, which may be null, learns of
// the ends of the links that were made and ended.
// Throws IndexOutOfBoundsException, before anything is changed, when the machine's list exists but
// is empty.
void LinkToHost(KE::Stub::ZORBEL_VMComputerSystem& machine,
                KE::Stub::ZORBEL_ORXComputerSystem& host, OldLink old, ChangeHub* changes);

}  // namespace KE::Instance

#endif
