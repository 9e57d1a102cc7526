// SPDX-License-Identifier: MIT
//
// Plain copies of what the caches hold, so that nothing is read from a cache after its mutex was
// let go. Texts are the bytes of the stubs, unchanged (XML entities stay as they are); every list
// is sorted by key.
#ifndef KECPP_TOOLS_COMMON_INVENTORYCOPY_H
#define KECPP_TOOLS_COMMON_INVENTORYCOPY_H

#include <optional>
#include <string>
#include <vector>

namespace tools {

struct Host {
  std::string name;  // the key
  std::string elementName;
  std::string description;
  std::string uuid;
  std::string vendor;
  std::string model;
  unsigned operationalStatus = 0;
  std::vector<std::string> machines;  // keys
};

struct Machine {
  std::string name;  // the key
  std::string elementName;
  std::string description;
  std::string uuid;
  std::string guestFullName;
  std::string guestHostName;
  std::string guestIPAddress;
  std::string vmPathName;
  std::string powerState;
  unsigned operationalStatus = 0;
  std::optional<std::string> host;  // key; none while the machine is not linked
};

struct Privilege {
  std::string instanceID;  // the key
  std::string elementName;
  std::vector<std::string> roles;  // keys
};

struct Role {
  std::string name;  // the key
  std::string elementName;
  std::string caption;
  std::string description;
  std::string roleType;
  std::vector<std::string> privileges;  // keys
  std::vector<std::string> identities;  // keys
};

struct Identity {
  std::string instanceID;          // the key
  std::vector<std::string> roles;  // keys
};

struct Systems {
  std::vector<Host> hosts;
  std::vector<Machine> machines;
};

struct Authorization {
  std::vector<Privilege> privileges;
  std::vector<Role> roles;
  std::vector<Identity> identities;
};

struct InventoryCopy {
  Systems systems;
  Authorization authorization;
};

}  // namespace tools

#endif
