// SPDX-License-Identifier: MIT
//
// What objects of one class were when they were last looked at: all their properties, or the keys
// of what they are linked to; each packed into one text.
//
// Thread safety: none. Complexity: O(1) an object; memory is its text and about 130 bytes.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_LASTCOPIES_H
#define KECPP_TOOLS_AGENT_INDICATIONS_LASTCOPIES_H

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tools/agent/Rows.h"

namespace tools::agent {

class LastCopies {
 public:
  // Takes the copy of the object of that key, and gives the former one.
  std::optional<std::string> Replace(const std::string& key, std::string copy);
  std::optional<std::string> Remove(const std::string& key);

  // Keeps it unless there is a copy of that key.
  void Add(const std::string& key, std::string&& copy) { copies.try_emplace(key, std::move(copy)); }

 private:
  std::unordered_map<std::string, std::string> copies;
};

// A row as one text, and its cells again.
std::string Pack(const Rows& rows, std::size_t row, std::size_t width);
void Unpack(std::string_view packed, Rows& rows);

}  // namespace tools::agent

#endif
