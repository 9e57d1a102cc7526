// SPDX-License-Identifier: MIT
#include "tools/agent/api/ApiPath.h"

#include <string_view>

#include "tools/agent/api/Fields.h"
#include "tools/agent/api/Problem.h"

namespace tools::agent::api {
namespace {

constexpr std::string_view PREFIX = "/api/v1/";

unsigned HexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
  throw BadRequest("a % in the path has no two hexadecimal digits behind it");
}

std::string PercentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    if (i + 2 >= text.size()) throw BadRequest("the path ends in the middle of a % code");
    decoded += static_cast<char>(HexDigit(text[i + 1]) * 16 + HexDigit(text[i + 2]));
    i += 2;
  }
  return decoded;
}

}  // namespace

ApiPath ReadPath(const std::string& target) {
  std::string_view path(target);
  path = path.substr(0, path.find('?'));
  if (path.substr(0, PREFIX.size()) != PREFIX) throw Problem(404, "there is only /api/v1/");
  path.remove_prefix(PREFIX.size());
  const std::size_t slash = path.find('/');
  const std::string_view first = path.substr(0, slash);
  if (slash == std::string_view::npos || !FindPlural(first)) return {std::string(path), {}};
  const std::string_view key = path.substr(slash + 1);
  if (key.find('/') != std::string_view::npos) {
    throw Problem(404, "there is nothing below an object; a slash in a key is written %2F");
  }
  return {std::string(first), PercentDecoded(key)};
}

}  // namespace tools::agent::api
