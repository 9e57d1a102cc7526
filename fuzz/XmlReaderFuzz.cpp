// SPDX-License-Identifier: MIT
//
// The XML reader, driven by the operations that the first line of the input names (two bytes each:
// the operation and the element's name) over the text in the rest; then the cursor over the same.
#include "fuzz/Fuzz.h"
#include "xml/KEXmlCursor.h"
#include "xml/Movements.h"
#include "xml/XmlException.h"

namespace {

using namespace KELib::Xml;
using KELib::KEString;

const char* const kNames[] = {"a", "ab", "val", "soapenv:Body", ""};

void Drive(fuzz::Input operations, const std::string& text) {
  KEString content(text.c_str());
  KEXmlReader reader(content, false, 0);
  reader.SetStrict(operations.Byte() % 2 == 1);
  while (!operations.Empty()) {
    const Movement& move = kMovements[operations.Byte() % std::size(kMovements)];
    const char* name = kNames[operations.Byte() % std::size(kNames)];
    const unsigned int before = reader.Pos();
    KEString first, second;
    try {
      move.run(reader, name, first, second);
    } catch (const XmlException&) {
      return;
    }
    FUZZ_CHECK(reader.Pos() >= before);
    FUZZ_CHECK(reader.Pos() <= reader.GetInputLength());
    FUZZ_CHECK(fuzz::Contains(text, first.Cstr()) && fuzz::Contains(text, second.Cstr()));
    reader.IsElementTag(name);
    reader.IsElementEndTag(name);
    reader.InsideElementTag();
    reader.IsValueCData();
    reader.HasComplexContent(name);
  }
}

// Walks everything. Each level that is entered is left or the text is malformed.
void Walk(const std::string& text) {
  KEString content(text.c_str());
  KEXmlReader reader(content, false, 0);
  KEXmlCursor cursor(reader);
  const char* const begin = reader.Str();
  const char* const end = begin + reader.GetInputLength();
  KELib::KEStringBuffer joined(0);
  XmlSlice name, attribute, value;
  try {
    for (const char* before = nullptr; cursor.Position() != before;) {
      before = cursor.Position();
      FUZZ_CHECK(begin <= before && before <= end);
      if (!cursor.NextChild(name)) {
        if (!cursor.PassEndTag(name)) break;
        continue;
      }
      FUZZ_CHECK(begin <= name.text && name.text + name.length <= end);
      while (cursor.NextAttribute(attribute, value)) {
        FUZZ_CHECK(begin <= value.text && value.text + value.length <= end);
      }
      if (cursor.HasChildElements()) {
        cursor.Enter();
      } else {
        FUZZ_CHECK(cursor.Text(name, joined).length <= text.size());
      }
    }
  } catch (const XmlException&) {
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string operations = input.Until('\n').substr(0, 64);
  const std::string text = input.Rest();
  Drive(fuzz::Input(reinterpret_cast<const std::uint8_t*>(operations.data()), operations.size()),
        text);
  Walk(text);
  return 0;
}
