// SPDX-License-Identifier: MIT
#include "tools/agent/indications/ListenerUrl.h"

#include <algorithm>

#include "tools/agent/HostName.h"
#include "tools/common/Schema.h"

namespace tools::agent {
namespace {

constexpr std::size_t LONGEST = 1024;

bool IsPathCharacter(char c) {
  return c > ' ' && c < '\x7f' &&
         std::string_view("\"#<>\\^`{|}").find(c) == std::string_view::npos;
}

bool TakeScheme(std::string_view& text) {
  for (const std::string_view scheme : {"http://", "https://"}) {
    if (!SameName(text.substr(0, scheme.size()), scheme)) continue;
    text.remove_prefix(scheme.size());
    return true;
  }
  return false;
}

}  // namespace

std::optional<ListenerUrl> ReadListenerUrl(std::string_view text) {
  std::string_view rest = text;
  if (text.size() > LONGEST || !TakeScheme(rest)) return {};
  const std::string_view authority = rest.substr(0, rest.find('/'));
  const std::string_view path = rest.substr(authority.size());
  const auto host = ReadHost(authority);
  if (!host || !std::all_of(path.begin(), path.end(), IsPathCharacter)) return {};
  return ListenerUrl{std::string(text), *host};
}

}  // namespace tools::agent
