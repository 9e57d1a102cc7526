// SPDX-License-Identifier: MIT
//
// The names of everything that is in the cluster. docs/fleet.md describes the layout.
//
// A part of a key is text in which letters, digits and "-._~" are themselves and every other byte
// is
// "%" and two hexadecimal digits, so that any name and any key of an object comes back, and a slash
// is always one between parts.
//
// Thread safety: any thread.
#ifndef KECPP_FLEET_KEYS_H
#define KECPP_FLEET_KEYS_H

#include <kecpp/inventory.h>

#include <optional>
#include <string>
#include <string_view>

namespace kecpp::fleet {

// The version of the layout, in every document. One that readers of this version cannot understand
// gets another number.
constexpr int kSchema = 1;

constexpr std::string_view kObjects = "inv/";    // inv/SITE/CLASS/KEY: one document an object
constexpr std::string_view kEpochs = "epoch/";   // epoch/SITE: who publishes the site
constexpr std::string_view kSites = "site/";     // site/SITE: how complete it is
constexpr std::string_view kLiving = "live/";    // live/SITE: there while its publisher lives
constexpr int kLeaseSeconds = 30;                // of live/SITE
constexpr std::size_t kLongestDocument = 65536;  // bytes
constexpr std::size_t kLongestSiteName = 128;    // bytes, before they are encoded

std::string EncodePart(std::string_view raw);
// Nothing for a text that EncodePart does not make.
std::optional<std::string> DecodePart(std::string_view part);

// "inv/SITE/", "epoch/SITE" and so on; `site` is the raw name.
std::string ObjectsOf(std::string_view site);
std::string EpochOf(std::string_view site);
std::string SiteOf(std::string_view site);
std::string LivingOf(std::string_view site);

// The key of an object below ObjectsOf its site: "CLASS/KEY".
std::string ObjectPart(Kind kind, std::string_view key);

struct ObjectName {
  Kind kind;
  std::string key;
};
// Nothing for what ObjectPart does not make.
std::optional<ObjectName> ParseObjectPart(std::string_view part);

struct FleetName {
  std::string site;
  ObjectName object;
};
// Of a whole key "inv/SITE/CLASS/KEY".
std::optional<FleetName> ParseObjectKey(std::string_view key);

// The kind whose NameOf it is.
std::optional<Kind> KindOf(std::string_view name);

// The first key behind all that begin with `prefix`, which is not empty and does not end with the
// byte 255: for ranges.
std::string EndOfPrefix(std::string_view prefix);

}  // namespace kecpp::fleet

#endif
