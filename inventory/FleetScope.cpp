// SPDX-License-Identifier: MIT
#include "inventory/FleetScope.h"

#include <fnmatch.h>

#include <utility>

#include "fleet/Keys.h"

namespace kecpp {
namespace {

using namespace fleet;

bool BeginsWith(std::string_view text, std::string_view begin) {
  return text.substr(0, begin.size()) == begin;
}

const char* WhyUnreadable(std::string_view document) {
  return document.size() > kLongestDocument ? "longer than 64 KiB" : "no document of version 1";
}

}  // namespace

FleetScope::FleetScope(std::string sites) : pattern(sites.empty() ? "*" : std::move(sites)) {
  const std::size_t special = pattern.find_first_of("*?[\\");
  const bool isOne = special == std::string::npos;
  const std::string rest = EncodePart(pattern.substr(0, special));
  AddRange(kObjects, isOne ? rest + '/' : rest, false);
  AddRange(kSites, rest, isOne);
  AddRange(kLiving, rest, isOne);
}

void FleetScope::AddRange(std::string_view begin, std::string_view rest, bool isOne) {
  WatchRange range{std::string(begin) + std::string(rest), {}};
  if (!isOne) range.end = EndOfPrefix(range.begin);
  ranges.push_back(std::move(range));
}

// Nothing for a name that no publisher has, or that was not asked for.
std::optional<std::string> FleetScope::SiteNamed(std::string_view part) const {
  auto name = DecodePart(part);
  if (!name || name->empty() || name->size() > kLongestSiteName) return {};
  // A name with a zero byte is matched up to that.
  if (fnmatch(pattern.c_str(), name->c_str(), 0) != 0) return {};
  return name;
}

std::optional<FleetNews> FleetScope::Read(const WatchEvent& event, const Skip& skip) const {
  const std::string& key = event.entry.key;
  const std::string& value = event.entry.value;
  const bool isThere = !event.isRemoved;
  if (BeginsWith(key, kSites) || BeginsWith(key, kLiving)) {
    const bool isLife = BeginsWith(key, kLiving);
    auto site = SiteNamed(std::string_view(key).substr((isLife ? kLiving : kSites).size()));
    if (!site) return {};
    if (isLife) return FleetNews{std::move(*site), LifeNews{isThere}};
    SiteNews news;
    if (isThere) news.document = ReadSite(value);
    if (isThere && !news.document) skip(key, WhyUnreadable(value));
    return FleetNews{std::move(*site), std::move(news)};
  }
  auto name = ParseObjectKey(key);
  if (!name) {
    if (isThere) skip(key, "no object's key");
    return {};
  }
  if (!SiteNamed(EncodePart(name->site))) return {};
  ObjectNews news{name->object.kind, std::move(name->object.key), {}, 0};
  if (isThere) news.object = ReadObject(news.kind, news.key, value, &news.changed);
  if (isThere && !news.object) skip(key, WhyUnreadable(value));
  return FleetNews{std::move(name->site), std::move(news)};
}

}  // namespace kecpp
