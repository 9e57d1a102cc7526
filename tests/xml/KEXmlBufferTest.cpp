// SPDX-License-Identifier: MIT
#include "xml/KEXmlBuffer.h"

#include <gtest/gtest.h>

namespace KELib::Xml {
namespace {

TEST(KEXmlBuffer, LaysElementsOutLineByLine) {
  KEXmlBuffer xml;
  xml.StartAddElementTag("a");
  xml.AddElementTagAndValue("b", "1");
  xml.AddElementTagAndValue("c", "");
  xml.StartAddElementTag("d");
  xml.EndAddElementTag("d");
  xml.StartAddElementTag("e");
  xml.AddElementTagAndValue("f", nullptr);
  xml.EndAddElementTag("e");
  xml.EndAddElementTag("a");
  EXPECT_STREQ(
      "<a>\n<b>1</b>\n<c xsi:nil=\"true\"/>\n<d/>\n<e>\n<f xsi:nil=\"true\"/>\n</e>\n</a>\n",
      xml.Str());
  EXPECT_EQ(xml.GetBufferLength(), xml.Bufr().Length());
}

TEST(KEXmlBuffer, WritesAttributesAndNamespacesInOrder) {
  KEXmlBuffer xml;
  xml.StartAddElementTag("n");
  xml.AddAttributeNameAndValue("a", "");
  xml.AddAttributeNameAndValue(nullptr, "b");
  xml.AddNamespace(nullptr, "urn:x");
  xml.AddNamespace("x", "urn:y");
  xml.AddNamespace("none", nullptr);
  xml.EndAddElementTagAndValue("n", "a<&b");
  xml.AddElementTagAttrAndValue("p", "q", "r", "s");
  xml.AddElementTagTNSAndValue("p", "q", "r", "s");
  xml.AddElementTagTNSTypeAndValue("p", nullptr, "r", "t", "s");
  xml.AddElementTagAttrTNSTypeAndValue("p", "q", "r", "x", "u", "t", nullptr);
  EXPECT_STREQ(
      "<n xmlns=\"urn:x\" xmlns:x=\"urn:y\">a<&b</n>\n<p q=\"r\">s</p>\n<p xmlns:q=\"r\">s</p>\n"
      "<p xmlns=\"r\" xsi:type=\"t\">s</p>\n"
      "<p q=\"r\" xmlns:x=\"u\" xsi:type=\"t\" xsi:nil=\"true\"/>\n",
      xml.Str());
}

// The envelope writes on behind a text of its own; what stands there is never closed.
TEST(KEXmlBuffer, ContinuesATextAndStartsAnew) {
  KEStringBuffer head;
  head.Append("<head>");
  KEXmlBuffer xml(head);
  EXPECT_TRUE(head.Empty());
  xml.StartAddElementTag("a");
  EXPECT_STREQ("<head><a", xml.Str());
  xml.Reset();
  EXPECT_EQ(128u, xml.Capacity());
  xml.StartAddElementTag("a");
  xml.Clear();
  xml.AddElementTagAndValue("b", "1");
  EXPECT_STREQ("<b>1</b>\n", xml.Str());
}

}  // namespace
}  // namespace KELib::Xml
