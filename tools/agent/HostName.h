// SPDX-License-Identifier: MIT
//
// The hosts that clients and command lines name.
//
// Thread safety: constant.
#ifndef KECPP_TOOLS_AGENT_HOSTNAME_H
#define KECPP_TOOLS_AGENT_HOSTNAME_H

#include <optional>
#include <string>
#include <string_view>

namespace tools::agent {

// The host in "HOST" or "HOST:PORT", the value of a Host header: a name, an IPv4 address, or an
// IPv6 address, which loses its brackets. Nothing for any other text and for more than 255 bytes.
std::optional<std::string> ReadHost(std::string_view text);

// True for "localhost" and for numeric addresses that only programs of this machine reach.
bool IsLoopback(const std::string& host);

}  // namespace tools::agent

#endif
