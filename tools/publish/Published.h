// SPDX-License-Identifier: MIT
//
// What is in the cluster of one site, as the publisher knows it: for each object the revision of
// its document and the digest of what it says.
//
// Thread safety: none.
#ifndef KECPP_TOOLS_PUBLISH_PUBLISHED_H
#define KECPP_TOOLS_PUBLISH_PUBLISHED_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tools::publish {

// Of a document without its epoch and time. Names of machines are anybody's choice, so it must not
// be possible to find two with one digest.
using Digest = std::array<unsigned char, 16>;
Digest DigestOf(std::string_view lastingPart);

class Published {
 public:
  struct Entry {
    std::int64_t revision;
    Digest digest;
  };

  // Null when there is none. `part` is the key behind "inv/SITE/".
  const Entry* Find(const std::string& part) const {
    const auto found = entries.find(part);
    return found == entries.end() ? nullptr : &found->second;
  }
  void Put(const std::string& part, const Entry& entry) { entries.insert_or_assign(part, entry); }
  void Remove(const std::string& part) { entries.erase(part); }
  void Clear() { entries.clear(); }
  std::size_t Size() const { return entries.size(); }

  template <class Use>
  void ForEach(Use use) const {
    for (const auto& entry : entries) use(entry.first);
  }

 private:
  std::unordered_map<std::string, Entry> entries;
};

}  // namespace tools::publish

#endif
