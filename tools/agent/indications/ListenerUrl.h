// SPDX-License-Identifier: MIT
//
// The URL of a listener, as a client gives it.
//
// Thread safety: plain values.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_LISTENERURL_H
#define KECPP_TOOLS_AGENT_INDICATIONS_LISTENERURL_H

#include <optional>
#include <string>
#include <string_view>

namespace tools::agent {

struct ListenerUrl {
  std::string text;  // the whole URL
  std::string host;  // a name, or an address without brackets
};

// "http[s]://HOST[:PORT][/PATH]", at most 1,024 bytes. Nothing for any other text: so there are no
// users and passwords in it, no blanks, quotes and fragments.
std::optional<ListenerUrl> ReadListenerUrl(std::string_view text);

}  // namespace tools::agent

#endif
