// SPDX-License-Identifier: MIT
#include "tools/agent/indications/AllowedHosts.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>
#include <stdexcept>

#include "tools/agent/HostName.h"
#include "tools/common/Schema.h"
#include "tools/common/Split.h"

namespace tools::agent {
namespace {

constexpr unsigned ALL_BITS = 128;
constexpr unsigned V4_BEGIN = 96;  // bits before an IPv4 address in IPv6

using Bytes = std::array<unsigned char, 16>;

Bytes FromV4(const in_addr& address) {
  Bytes bytes = {};
  bytes[10] = bytes[11] = 0xff;
  std::memcpy(&bytes[12], &address, sizeof address);
  return bytes;
}

std::optional<Bytes> ReadAddress(const std::string& text, unsigned& begin) {
  in_addr v4{};
  begin = V4_BEGIN;
  if (inet_pton(AF_INET, text.c_str(), &v4) == 1) return FromV4(v4);
  begin = 0;
  Bytes bytes = {};
  if (inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1) return bytes;
  return {};
}

std::optional<Bytes> BytesOf(const sockaddr& address) {
  if (address.sa_family == AF_INET) {
    return FromV4(reinterpret_cast<const sockaddr_in&>(address).sin_addr);
  }
  if (address.sa_family != AF_INET6) return {};
  Bytes bytes;
  std::memcpy(bytes.data(), &reinterpret_cast<const sockaddr_in6&>(address).sin6_addr,
              bytes.size());
  return bytes;
}

// Of this machine, of its link, or no host's.
bool IsNear(const Bytes& bytes) {
  in6_addr v6;
  std::memcpy(&v6, bytes.data(), sizeof v6);
  if (IN6_IS_ADDR_V4MAPPED(&v6)) {
    return bytes[12] == 0 || bytes[12] == 127 || (bytes[12] == 169 && bytes[13] == 254) ||
           bytes[12] >= 224;
  }
  return IN6_IS_ADDR_LOOPBACK(&v6) || IN6_IS_ADDR_UNSPECIFIED(&v6) || IN6_IS_ADDR_LINKLOCAL(&v6) ||
         IN6_IS_ADDR_MULTICAST(&v6);
}

[[noreturn]] void Refuse(std::string_view item) {
  throw std::runtime_error("\"" + std::string(item) + "\" is no host, address or network");
}

unsigned ReadBits(std::string_view item, std::string_view text, unsigned most) {
  unsigned bits = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), bits);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size() || bits > most) {
    Refuse(item);
  }
  return bits;
}

}  // namespace

AllowedHosts::AllowedHosts(const std::string& list) {
  for (const std::string_view item : Split(list, ',')) {
    const std::size_t slash = item.find('/');
    unsigned begin = 0;
    const auto address = ReadAddress(std::string(item.substr(0, slash)), begin);
    if (address) {
      const unsigned bits = slash == std::string_view::npos
                                ? ALL_BITS
                                : begin + ReadBits(item, item.substr(slash + 1), ALL_BITS - begin);
      networks.push_back({*address, bits});
    } else {
      if (ReadHost(item) != std::string(item)) Refuse(item);
      names.emplace_back(item);
    }
  }
}

bool AllowedHosts::Contains(const Network& network, const Bytes& address) {
  const unsigned whole = network.bits / 8;
  if (std::memcmp(network.address.data(), address.data(), whole) != 0) return false;
  const unsigned rest = network.bits % 8;
  return rest == 0 || (network.address[whole] ^ address[whole]) >> (8 - rest) == 0;
}

bool AllowedHosts::IsNamed(const std::string& host) const {
  return std::any_of(names.begin(), names.end(),
                     [&](const std::string& name) { return SameName(name, host); });
}

bool AllowedHosts::IsInNetwork(const Bytes& address) const {
  return std::any_of(networks.begin(), networks.end(),
                     [&](const Network& network) { return Contains(network, address); });
}

bool AllowedHosts::MayName(const std::string& host) const {
  unsigned begin = 0;
  const auto address = ReadAddress(host, begin);
  if (address) return IsInNetwork(*address);
  return IsNamed(host) || !networks.empty();
}

bool AllowedHosts::MayReach(const std::string& host, const sockaddr& address) const {
  const auto bytes = BytesOf(address);
  if (!bytes) return false;
  if (IsInNetwork(*bytes)) return true;
  return IsNamed(host) && (!IsNear(*bytes) || SameName(host, "localhost"));
}

}  // namespace tools::agent
