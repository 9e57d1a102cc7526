// SPDX-License-Identifier: MIT
//
// The parameters behind a path's question mark. Those that nobody asks for are unknown.
//
// Thread safety: none.
#ifndef KECPP_TOOLS_AGENT_API_PARAMETERS_H
#define KECPP_TOOLS_AGENT_API_PARAMETERS_H

#include <cstddef>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tools::agent::api {

class Parameters {
 public:
  using Map = std::multimap<std::string, std::string>;

  // Throws Problem for a parameter that is not among `known`. The map outlives the object.
  Parameters(const Map& all, std::initializer_list<const char*> known);

  std::vector<std::string> All(const std::string& name) const;

  // Nothing without it. Throws Problem when it comes twice.
  std::optional<std::string> One(const std::string& name) const;

  // `otherwise` without it. Throws Problem for what is no number or not between the bounds.
  std::size_t Number(const std::string& name, std::size_t least, std::size_t most,
                     std::size_t otherwise) const;

 private:
  const Map& all;
};

}  // namespace tools::agent::api

#endif
