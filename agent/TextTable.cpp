// SPDX-License-Identifier: MIT
#include "agent/TextTable.h"

#include <algorithm>

namespace inventory {
namespace {

bool IsContinuation(unsigned char byte) {
  return (byte & 0xC0) == 0x80;
}

bool IsControl(unsigned char byte) {
  return byte < 0x20 || byte == 0x7F;
}

// Also the control characters U+0080 to U+009F, which UTF-8 writes as C2 80 to C2 9F.
std::string WithoutControls(std::string text) {
  std::string clean;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
    if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
      clean += '?';
      ++i;
    } else {
      clean += IsControl(byte) ? '?' : text[i];
    }
  }
  return clean;
}

}  // namespace

std::size_t CountCharacters(const std::string& text) {
  std::size_t count = 0;
  bool insideCharacter = false;
  for (char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (!(IsContinuation(byte) && insideCharacter)) ++count;
    insideCharacter = byte >= 0x80;
  }
  return count;
}

TextTable::TextTable(std::string tableTitle, std::vector<std::string> columns)
    : title(std::move(tableTitle)), widths(columns.size(), 0) {
  AddRow(std::move(columns));
}

void TextTable::AddRow(std::vector<std::string> cells) {
  cells.resize(widths.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    cells[i] = WithoutControls(std::move(cells[i]));
    widths[i] = std::max(widths[i], CountCharacters(cells[i]));
  }
  rows.push_back(std::move(cells));
}

std::string TextTable::Line(const std::vector<std::string>& cells) const {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    line += (i == 0 ? "  " : "   ") + cells[i];
    line.append(widths[i] - CountCharacters(cells[i]), ' ');
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line + '\n';
}

std::string TextTable::Format(std::size_t maxRows) const {
  const std::size_t total = rows.size() - 1;
  const std::size_t shown = std::min(total, maxRows);
  std::string text = title + " (" + std::to_string(total) + ")\n";
  for (std::size_t i = 0; i <= shown; ++i) text += Line(rows[i]);
  if (shown < total) text += "  ... and " + std::to_string(total - shown) + " more\n";
  return text;
}

}  // namespace inventory
