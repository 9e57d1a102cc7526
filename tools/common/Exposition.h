// SPDX-License-Identifier: MIT
//
// Writes metrics in the text format of Prometheus, version 0.0.4.
//
// Thread safety: none.
#ifndef KECPP_TOOLS_COMMON_EXPOSITION_H
#define KECPP_TOOLS_COMMON_EXPOSITION_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace tools {

// The shortest text that means the number.
std::string NumberText(double number);

class Exposition {
 public:
  using Labels = std::initializer_list<std::pair<const char*, std::string_view>>;

  static constexpr const char* CONTENT_TYPE = "text/plain; version=0.0.4; charset=utf-8";

  // A metric and its type, "counter", "gauge" or "histogram". Its samples follow.
  void Family(const char* name, const char* type, const char* help);

  // Label values are raw text; what is no UTF-8 becomes U+FFFD. `suffix` is a histogram's
  // "_bucket",
  // "_sum" or "_count".
  void Sample(Labels labels, double value, const char* suffix = "");
  void Sample(double value) { Sample({}, value); }

  std::string Take() { return std::move(text); }

 private:
  void PutValue(std::string_view raw);

  std::string family;
  std::string text;
};

}  // namespace tools

#endif
