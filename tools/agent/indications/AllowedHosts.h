// SPDX-License-Identifier: MIT
//
// The hosts that indications may be sent to. A subscription makes the agent send to an address:
// without this list it could be made to reach any port of any machine in its network.
//
// Thread safety: constant.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_ALLOWEDHOSTS_H
#define KECPP_TOOLS_AGENT_INDICATIONS_ALLOWEDHOSTS_H

#include <sys/socket.h>

#include <array>
#include <string>
#include <vector>

namespace tools::agent {

class AllowedHosts {
 public:
  // Names, addresses and networks ("10.1.0.0/16", "2001:db8::/32") with commas between. Throws
  // std::runtime_error for what is none of these.
  explicit AllowedHosts(const std::string& list);

  bool IsEmpty() const { return names.empty() && networks.empty(); }

  // Whether a destination may name the host: a name of the list, an address that is in it, or any
  // name when networks are, since only its address can tell.
  bool MayName(const std::string& host) const;

  // Whether a connection may be made to that address of the host, asked when the name was
  // resolved: what a name leads to may change at any time. A name of the list may lead anywhere but
  // to this machine, unless it is "localhost", and to its neighbours of the link.
  bool MayReach(const std::string& host, const sockaddr& address) const;

 private:
  using Bytes = std::array<unsigned char, 16>;  // IPv4 addresses in IPv6
  struct Network {
    Bytes address;
    unsigned bits;
  };

  static bool Contains(const Network& network, const Bytes& address);
  bool IsNamed(const std::string& host) const;
  bool IsInNetwork(const Bytes& address) const;

  std::vector<std::string> names;
  std::vector<Network> networks;
};

}  // namespace tools::agent

#endif
