// SPDX-License-Identifier: MIT
#include "tools/common/Exposition.h"

#include <charconv>

#include "tools/common/Utf8.h"

namespace tools {

std::string NumberText(double number) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

void Exposition::Family(const char* name, const char* type, const char* help) {
  family = name;
  text.append("# HELP ").append(name).append(" ").append(help).append("\n");
  text.append("# TYPE ").append(name).append(" ").append(type).append("\n");
}

void Exposition::Sample(Labels labels, double value, const char* suffix) {
  text.append(family).append(suffix);
  char separator = '{';
  for (const auto& [name, label] : labels) {
    (text += separator) += name;
    text += "=\"";
    PutValue(label);
    text += '"';
    separator = ',';
  }
  if (labels.size() > 0) text += '}';
  (text += ' ') += NumberText(value);
  text += '\n';
}

void Exposition::PutValue(std::string_view raw) {
  while (!raw.empty()) {
    const char c = raw.front();
    const std::size_t length = SequenceLength(raw);
    if (c == '\n') {
      text += "\\n";
    } else if (c == '\\' || c == '"') {
      (text += '\\') += c;
    } else if (length == 0) {
      text += REPLACEMENT;
    } else {
      text += raw.substr(0, length);
    }
    raw.remove_prefix(length == 0 ? 1 : length);
  }
}

}  // namespace tools
