// SPDX-License-Identifier: MIT
#include "tools/agent/indications/Plan.h"

#include <algorithm>

namespace tools::agent {
namespace {

constexpr EventType TYPES[] = {EventType::Creation, EventType::Modification, EventType::Deletion};

}  // namespace

void Plan::Add(const Wish& wish) {
  wishes.push_back(wish);
  for (const ClassRow* source : EventSources()) {
    const bool covers = std::any_of(std::begin(TYPES), std::end(TYPES), [&](EventType type) {
      return wish.filter->Covers(type, *source);
    });
    if (covers) bySource[source].push_back(wish);
  }
}

const std::vector<Plan::Wish>& Plan::WishesFor(const ClassRow& source) const {
  static const auto& none = *new std::vector<Wish>;
  const auto found = bySource.find(&source);
  return found == bySource.end() ? none : found->second;
}

bool Plan::Covers(EventType type, const ClassRow& source) const {
  const auto& wanted = WishesFor(source);
  return std::any_of(wanted.begin(), wanted.end(),
                     [&](const Wish& wish) { return wish.filter->Covers(type, source); });
}

bool Plan::NeedsCopies(const ClassRow& source) const {
  if (source.isAssociation) return !WishesFor(source).empty();
  return Covers(EventType::Modification, source);
}

}  // namespace tools::agent
