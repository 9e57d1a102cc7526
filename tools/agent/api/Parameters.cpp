// SPDX-License-Identifier: MIT
#include "tools/agent/api/Parameters.h"

#include <algorithm>
#include <charconv>

#include "tools/agent/api/Problem.h"

namespace tools::agent::api {

Parameters::Parameters(const Map& given, std::initializer_list<const char*> known) : all(given) {
  for (const auto& [name, value] : all) {
    if (std::find(known.begin(), known.end(), name) == known.end()) {
      throw BadRequest("unknown parameter \"" + name + "\"");
    }
  }
}

std::vector<std::string> Parameters::All(const std::string& name) const {
  std::vector<std::string> values;
  const auto [first, end] = all.equal_range(name);
  for (auto it = first; it != end; ++it) values.push_back(it->second);
  return values;
}

std::optional<std::string> Parameters::One(const std::string& name) const {
  const std::vector<std::string> values = All(name);
  if (values.size() > 1) throw BadRequest("the parameter \"" + name + "\" comes twice");
  if (values.empty()) return {};
  return values.front();
}

std::size_t Parameters::Number(const std::string& name, std::size_t least, std::size_t most,
                               std::size_t otherwise) const {
  const auto text = One(name);
  if (!text) return otherwise;
  std::size_t number = 0;
  const char* const end = text->data() + text->size();
  const auto [stop, error] = std::from_chars(text->data(), end, number);
  if (error != std::errc() || stop != end || number < least || number > most) {
    throw BadRequest("\"" + name + "\" must be a number from " + std::to_string(least) + " to " +
                     std::to_string(most));
  }
  return number;
}

}  // namespace tools::agent::api
