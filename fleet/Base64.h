// SPDX-License-Identifier: MIT
//
// Base64, as the cluster's JSON has every key and value.
//
// Thread safety: any thread.
#ifndef KECPP_FLEET_BASE64_H
#define KECPP_FLEET_BASE64_H

#include <optional>
#include <string>
#include <string_view>

namespace kecpp::fleet {

// Appends the encoded bytes to `out`, with padding.
void AppendBase64(std::string& out, std::string_view bytes);

// Nothing for a text that is not base64 with padding.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace kecpp::fleet

#endif
