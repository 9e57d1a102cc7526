// SPDX-License-Identifier: MIT
//
// Every movement of the reader.
#ifndef KECPP_TESTS_XML_MOVEMENTS_H
#define KECPP_TESTS_XML_MOVEMENTS_H

#include "xml/KEXmlReader.h"

namespace KELib::Xml {

using Text = KEString;
using Movement = void (*)(KEXmlReader&, const char* name, Text&, Text&);

inline const Movement kMovements[] = {
    [](KEXmlReader& r, const char* n, Text&, Text&) { r.FindElementTag(n); },
    [](KEXmlReader& r, const char* n, Text&, Text&) { r.SkipElementTag(n); },
    [](KEXmlReader& r, const char*, Text& a, Text&) { r.GetElementTag(a); },
    [](KEXmlReader& r, const char*, Text& a, Text& b) { r.GetAttributeNameAndValue(a, b); },
    [](KEXmlReader& r, const char* n, Text& a, Text& b) {
      r.GetElementAttributeNameAndValue(n, a, b);
    },
    [](KEXmlReader& r, const char* n, Text& a, Text&) { r.GetElementValue(n, a); },
    [](KEXmlReader& r, const char* n, Text& a, Text&) { r.GetNamedElementValue(n, a); },
    [](KEXmlReader& r, const char* n, Text& a, Text&) { r.GetCDataValue(n, a); },
    [](KEXmlReader& r, const char* n, Text& a, Text&) { r.GetElementContent(n, a); },
    [](KEXmlReader& r, const char*, Text&, Text&) { r.SkipElementStartClose(); },
    [](KEXmlReader& r, const char* n, Text&, Text&) { r.SkipElementEndTag(n); },
    [](KEXmlReader& r, const char* n, Text&, Text&) { r.FindAndSkipElementEndTag(n); },
    [](KEXmlReader& r, const char*, Text&, Text&) { r.SkipLineEndings(); },
    [](KEXmlReader& r, const char*, Text&, Text&) { r.SkipChar(' '); },
    [](KEXmlReader& r, const char*, Text&, Text&) { r.SkipTillChar('<'); },
    [](KEXmlReader& r, const char*, Text& a, Text&) { r.GetStringUptilChar('>', a); }};

}  // namespace KELib::Xml

#endif
