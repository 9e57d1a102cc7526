// SPDX-License-Identifier: MIT
#include "fleet/Keys.h"

namespace kecpp::fleet {
namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";

bool IsPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_' || c == '~';
}

std::string Joined(std::string_view begin, std::string_view site) {
  return std::string(begin) + EncodePart(site);
}

}  // namespace

std::string EncodePart(std::string_view raw) {
  std::string part;
  part.reserve(raw.size());
  for (const char c : raw) {
    if (IsPlain(c)) {
      part += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    part += '%';
    part += kDigits[byte >> 4];
    part += kDigits[byte & 15];
  }
  return part;
}

// One text for one name: what could have been written otherwise is refused.
std::optional<std::string> DecodePart(std::string_view part) {
  std::string raw;
  raw.reserve(part.size());
  for (std::size_t at = 0; at < part.size(); ++at) {
    if (IsPlain(part[at])) {
      raw += part[at];
      continue;
    }
    if (part[at] != '%' || part.size() - at < 3) return {};
    const std::size_t high = kDigits.find(part[at + 1]);
    const std::size_t low = kDigits.find(part[at + 2]);
    if (high == std::string_view::npos || low == std::string_view::npos) return {};
    const char c = static_cast<char>(high << 4 | low);
    if (IsPlain(c)) return {};
    raw += c;
    at += 2;
  }
  return raw;
}

std::string ObjectsOf(std::string_view site) {
  return Joined(kObjects, site) + '/';
}
std::string EpochOf(std::string_view site) {
  return Joined(kEpochs, site);
}
std::string SiteOf(std::string_view site) {
  return Joined(kSites, site);
}
std::string LivingOf(std::string_view site) {
  return Joined(kLiving, site);
}

std::string ObjectPart(Kind kind, std::string_view key) {
  return std::string(NameOf(kind)) + '/' + EncodePart(key);
}

std::optional<ObjectName> ParseObjectPart(std::string_view part) {
  const std::size_t slash = part.find('/');
  if (slash == std::string_view::npos) return {};
  const auto kind = KindOf(part.substr(0, slash));
  auto key = DecodePart(part.substr(slash + 1));
  if (!kind || !key) return {};
  return ObjectName{*kind, std::move(*key)};
}

std::optional<FleetName> ParseObjectKey(std::string_view key) {
  if (key.substr(0, kObjects.size()) != kObjects) return {};
  key.remove_prefix(kObjects.size());
  const std::size_t slash = key.find('/');
  if (slash == std::string_view::npos) return {};
  auto site = DecodePart(key.substr(0, slash));
  auto object = ParseObjectPart(key.substr(slash + 1));
  if (!site || !object) return {};
  return FleetName{std::move(*site), std::move(*object)};
}

std::optional<Kind> KindOf(std::string_view name) {
  for (const Kind kind : {Kind::host, Kind::machine, Kind::role, Kind::privilege, Kind::identity}) {
    if (name == NameOf(kind)) return kind;
  }
  return {};
}

std::string EndOfPrefix(std::string_view prefix) {
  std::string end(prefix);
  end.back() = static_cast<char>(static_cast<unsigned char>(end.back()) + 1);
  return end;
}

}  // namespace kecpp::fleet
