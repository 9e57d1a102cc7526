// SPDX-License-Identifier: MIT
#include "tools/agent/HostName.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <charconv>
#include <cstdint>

#include "tools/common/Schema.h"

namespace tools::agent {
namespace {

constexpr std::size_t LONGEST = 255;
constexpr const char* NAME_CHARACTERS =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._";
constexpr const char* IPV6_CHARACTERS = "abcdefABCDEF0123456789:.";

// ":5988"
bool IsPort(std::string_view text) {
  if (text.front() != ':') return false;
  std::uint16_t port = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data() + 1, end, port);
  return result.ec == std::errc() && result.ptr == end;
}

bool IsLoopback(const sockaddr& address) {
  constexpr unsigned char FIRST_BYTE = 127;
  if (address.sa_family == AF_INET) {
    const auto& ip = reinterpret_cast<const sockaddr_in&>(address).sin_addr;
    return ntohl(ip.s_addr) >> 24 == FIRST_BYTE;
  }
  if (address.sa_family != AF_INET6) return false;
  const auto& ip = reinterpret_cast<const sockaddr_in6&>(address).sin6_addr;
  return IN6_IS_ADDR_LOOPBACK(&ip) || (IN6_IS_ADDR_V4MAPPED(&ip) && ip.s6_addr[12] == FIRST_BYTE);
}

}  // namespace

std::optional<std::string> ReadHost(std::string_view text) {
  if (text.empty() || text.size() > LONGEST) return {};
  const bool inBrackets = text.front() == '[';
  if (inBrackets) text.remove_prefix(1);
  const char* characters = inBrackets ? IPV6_CHARACTERS : NAME_CHARACTERS;
  const std::string_view host = text.substr(0, text.find_first_not_of(characters));
  text.remove_prefix(host.size());
  if (inBrackets) {
    if (text.empty() || text.front() != ']') return {};
    text.remove_prefix(1);
  }
  if (host.empty() || (!text.empty() && !IsPort(text))) return {};
  return std::string(host);
}

bool IsLoopback(const std::string& host) {
  if (SameName(host, "localhost")) return true;
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST;
  addrinfo* found = nullptr;
  if (getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return false;
  const bool isLoopback = IsLoopback(*found->ai_addr);
  freeaddrinfo(found);
  return isLoopback;
}

}  // namespace tools::agent
