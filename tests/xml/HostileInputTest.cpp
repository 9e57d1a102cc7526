// SPDX-License-Identifier: MIT
//
// Whatever stands in a text, the reader stays inside it, goes forward only and fails with
// XmlException alone. Built with the sanitizers this also finds reads outside the text.
#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>

#include "xml/KEXmlReader.h"
#include "xml/Movements.h"
#include "xml/XmlException.h"

namespace KELib::Xml {
namespace {

const char kDocument[] =
    "<?xml version=\"1.0\"?>\r\n<v xsi:type=\"T\" type='x>y'>\n <b/>\t<v>text &lt;</v>"
    "<!-- </v> --><v><![CDATA[<v>]]></v ></v>\n<b k=\"1\"/><v>last</v>";

void Step(KEXmlReader& reader, unsigned int choice, KEString& a, KEString& b) {
  const char* const names[] = {"v", "b", "Config", ""};
  const char* name = names[choice / std::size(kMovements) % std::size(names)];
  a.Clear();
  kMovements[choice % std::size(kMovements)](reader, name, a, b);
  reader.HasComplexContent(name);
  reader.IsElementTag(name);
  reader.IsElementEndTag(name);
  reader.IsValueCData();
}

void Walk(const std::string& text, std::mt19937& random) {
  KEString input(text.c_str()), a, b;
  KEXmlReader reader(input, false, 0);
  reader.SetStrict(random() % 2 == 0);
  for (int i = 0; i < 12; ++i) {
    const unsigned int before = reader.Pos();
    try {
      Step(reader, static_cast<unsigned int>(random()), a, b);
    } catch (const XmlException&) {
    }
    ASSERT_LE(before, reader.Pos()) << text;
    ASSERT_LE(reader.Pos(), reader.GetInputLength()) << text;
  }
}

TEST(HostileInput, LeavesTheReaderInsideItsText) {
  std::mt19937 random(20);
  const std::string document = kDocument;
  const std::string bytes = "<>/!-[]?\"'= \nvb\xff";
  for (int round = 0; round < 5000; ++round) {
    std::string text = document.substr(random() % 40, random() % document.size());
    for (unsigned int changes = random() % 4; changes > 0 && !text.empty(); --changes) {
      text[random() % text.size()] = bytes[random() % bytes.size()];
    }
    Walk(text, random);
    if (HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace KELib::Xml
