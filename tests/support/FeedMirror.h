// SPDX-License-Identifier: MIT
//
// A copy of what is cached that is kept by a change feed alone: of each entry the object is read
// again or forgotten. What the entries say must fit what the copy has.
#ifndef KECPP_TESTS_SUPPORT_FEEDMIRROR_H
#define KECPP_TESTS_SUPPORT_FEEDMIRROR_H

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "datasync/CacheDump.h"
#include "datasync/KEDataSync.h"
#include "instance/KEChangeFeed.h"

class FeedMirror {
 public:
  explicit FeedMirror(KE::Service::KEDataSync& dataSync)
      : sync(dataSync), feed(dataSync.OpenChangeFeed()) {}

  // Takes at most `max` entries; returns what Take returned.
  int Follow(int max, int milliseconds) {
    using Kind = KE::Instance::KEChange::Kind;
    std::vector<KE::Instance::KEChange> changes(static_cast<std::size_t>(max));
    std::set<Id> given;
    const int taken = feed->Take(changes.data(), max, milliseconds);
    for (int i = 0; i < taken; ++i) {
      auto& [kind, className, key] = changes[static_cast<std::size_t>(i)];
      const Id id(className, key.Cstr());
      if (!given.insert(id).second) wrong += "twice: " + id.second + "\n";
      if ((kind == Kind::added) == (objects.count(id) > 0)) wrong += "unfit: " + id.second + "\n";
      objects[id] = DumpObject(*sync.GetCache(), className, key);
      if (kind == Kind::removed) objects.erase(id);
    }
    return taken;
  }

  // With everything taken that there is: as DumpCaches, then what was wrong with the entries.
  std::string Dump() {
    while (Follow(7, 0) > 0) continue;
    std::set<std::string> lines;
    for (const auto& [id, line] : objects) lines.insert(line);
    std::string text;
    for (const std::string& line : lines) text += line;
    return text + wrong;
  }

  const std::string& Wrong() const { return wrong; }

 private:
  using Id = std::pair<std::string, std::string>;

  KE::Service::KEDataSync& sync;
  const std::unique_ptr<KE::Instance::KEChangeFeed> feed;
  std::map<Id, std::string> objects;
  std::string wrong;
};

#endif
