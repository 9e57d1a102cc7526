// SPDX-License-Identifier: MIT
#include "xml/XmlEscape.h"

#include <gtest/gtest.h>

#include "xml/XmlException.h"

namespace KELib::Xml {
namespace {

TEST(XmlEscape, EscapesAndDecodes) {
  const struct {
    void (*convert)(const char*, KEString&);
    const char *text, *expected;
  } cases[] = {{EscapeText, nullptr, ""},
               {EscapeText, "a&lt;<b>\"'", "a&amp;lt;&lt;b&gt;\"'"},
               {EscapeStray, "&lt;&#x41;&#65;& &foo; &#; &#x110000; <>",
                "&lt;&#x41;&#65;&amp; &amp;foo; &amp;#; &amp;#x110000; &lt;&gt;"},
               {DecodeEntities, "&amp;lt;&lt;&gt;&quot;&apos;", "&lt;<>\"'"},
               {DecodeEntities, "&#228;&#x20AC;&#x1F600;\xc3\xa4",
                "\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80\xc3\xa4"},
               {DecodeEntities, "&#0; &#xD800; &#x; &#99999999999; &nbsp; &am",
                "&#0; &#xD800; &#x; &#99999999999; &nbsp; &am"},
               {DecodeEntities, "&", "&"},
               {DecodeEntities, nullptr, ""}};
  for (const auto& c : cases) {
    KEString out("stale");
    c.convert(c.text, out);
    EXPECT_STREQ(c.expected, out.Cstr());
  }
}

TEST(XmlException, JoinsAndCopiesItsTexts) {
  EXPECT_THROW(ThrowXmlException("fixed"), XmlException);
  try {
    KEString gone("a");
    ThrowXmlException(gone, "b");
  } catch (const Exception& e) {
    EXPECT_STREQ("ab", e.What());
  }
}

}  // namespace
}  // namespace KELib::Xml
