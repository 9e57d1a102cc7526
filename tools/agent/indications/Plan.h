// SPDX-License-Identifier: MIT
//
// Who wants to know what: the subscriptions that are enabled, by the class of what changes.
//
// Thread safety: constant once it is made.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_PLAN_H
#define KECPP_TOOLS_AGENT_INDICATIONS_PLAN_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tools/agent/indications/Delivery.h"
#include "tools/agent/indications/EventFilter.h"

namespace tools::agent {

class Plan {
 public:
  struct Wish {
    std::string filterName;
    std::shared_ptr<const EventFilter> filter;
    std::shared_ptr<Delivery> delivery;
  };

  void Add(const Wish& wish);

  bool IsEmpty() const { return wishes.empty(); }

  // Those whose filter covers the class, in any type of event or in one.
  const std::vector<Wish>& WishesFor(const ClassRow& source) const;
  bool Covers(EventType type, const ClassRow& source) const;

  // What must be kept of the objects of a class: nothing of one whose modifications nobody wants.
  // Of a class of links: of the objects at its results.
  bool NeedsCopies(const ClassRow& source) const;

  // Each delivery once or several times.
  const std::vector<Wish>& All() const { return wishes; }

 private:
  std::vector<Wish> wishes;
  std::map<const ClassRow*, std::vector<Wish>> bySource;
};

}  // namespace tools::agent

#endif
