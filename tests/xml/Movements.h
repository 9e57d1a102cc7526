// SPDX-License-Identifier: MIT
//
// Every movement of the reader. What it takes goes to the texts; false: there was nothing.
#ifndef KECPP_TESTS_XML_MOVEMENTS_H
#define KECPP_TESTS_XML_MOVEMENTS_H

#include "xml/KEXmlReader.h"

namespace KELib::Xml {

using R = KEXmlReader;
using T = KEString;

struct Movement {
  const char* name;
  bool (*run)(KEXmlReader& reader, const char* element, KEString& first, KEString& second);
};

inline constexpr Movement kMovements[] = {
    {"find", [](R& r, const char* n, T&, T&) { return r.FindElementTag(n); }},
    {"skip", [](R& r, const char* n, T&, T&) { return r.SkipElementTag(n), true; }},
    {"tag", [](R& r, const char*, T& a, T&) { return r.GetElementTag(a), true; }},
    {"attribute",
     [](R& r, const char*, T& a, T& b) { return r.GetAttributeNameAndValue(a, b), true; }},
    {"attribute-of", [](R& r, const char* n, T& a,
                        T& b) { return r.GetElementAttributeNameAndValue(n, a, b), true; }},
    {"value", [](R& r, const char* n, T& a, T&) { return r.GetElementValue(n, a), true; }},
    {"named-value", [](R& r, const char* n, T& a, T&) { return r.GetNamedElementValue(n, a); }},
    {"section", [](R& r, const char* n, T& a, T&) { return r.GetCDataValue(n, a), true; }},
    {"content", [](R& r, const char* n, T& a, T&) { return r.GetElementContent(n, a), true; }},
    {"close-start", [](R& r, const char*, T&, T&) { return r.SkipElementStartClose(), true; }},
    {"skip-end", [](R& r, const char* n, T&, T&) { return r.SkipElementEndTag(n), true; }},
    {"find-end", [](R& r, const char* n, T&, T&) { return r.FindAndSkipElementEndTag(n); }},
    {"line-ends", [](R& r, const char*, T&, T&) { return r.SkipLineEndings(), true; }},
    {"blanks", [](R& r, const char*, T&, T&) { return r.SkipChar(' '), true; }},
    {"till", [](R& r, const char*, T&, T&) { return r.SkipTillChar('<'), true; }},
    {"until", [](R& r, const char*, T& a, T&) { return r.GetStringUptilChar('>', a), true; }}};

}  // namespace KELib::Xml

#endif
