// SPDX-License-Identifier: MIT
#include "tools/agent/Element.h"

#include "tools/common/Split.h"

namespace tools::agent {
namespace {

void WriteValue(std::string_view stored, XmlWriter& out) {
  out.Encoded("<VALUE>");
  out.StoredText(stored);
  out.Encoded("</VALUE>");
}

// Each item is followed by a NUL.
void WriteList(std::string_view list, XmlWriter& out) {
  out.Encoded("<VALUE.ARRAY>");
  while (!list.empty()) WriteValue(TakePart(list, '\0'), out);
  out.Encoded("</VALUE.ARRAY>");
}

}  // namespace

void Element::AddCell(Form form, std::size_t column) {
  cells.push_back({constant.Written().size(), form, column});
}

void Element::Write(const Rows& rows, std::size_t row, XmlWriter& out) const {
  const std::string_view text = constant.Written();
  std::size_t written = 0;
  for (const Cell& cell : cells) {
    out.Encoded(text.substr(written, cell.at - written));
    written = cell.at;
    const std::optional<std::string_view> value = rows.At(row, cell.column);
    if (!value) continue;
    if (cell.form == Form::Text) {
      out.StoredText(*value);
    } else if (cell.form == Form::Value) {
      WriteValue(*value, out);
    } else {
      WriteList(*value, out);
    }
  }
  out.Encoded(text.substr(written));
}

}  // namespace tools::agent
