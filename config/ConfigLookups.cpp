// SPDX-License-Identifier: MIT
#include "config/ConfigLookups.h"

#include "config/DefaultConfig.h"
#include "xml/XmlException.h"

namespace KELib {

using Xml::KEXmlCursor;
using Xml::KEXmlReader;
using Xml::XmlSlice;

namespace {

// Agents read this section, each from a document that it has opened for that.
bool IsReadAlone(const ConfigLookup& section) {
  return section.name.Equals("LogInfo");
}

// The elements of the other sections are found wherever they are.
bool IsEntered(const ConfigLookup& section) {
  return section.name.Equals("LoginInfo") || IsReadAlone(section);
}

}  // namespace

void Rewind(KEXmlReader& reader) {
  KEString text;
  reader.MoveContentTo(text);
  reader.SetInput(text, false);
  reader.SetStartPos(0);
}

ConfigLookups::ConfigLookups() {
  KEString text(KE::Service::DEFAULT_CONFIG_CONTENT);
  KEXmlReader reader(text, 0);
  KEXmlCursor cursor(reader);
  XmlSlice name, section, element;
  cursor.NextChild(name);
  name.CopyTo(root);
  cursor.Enter();
  while (cursor.NextChild(section)) {
    Add(section, true);
    cursor.Enter();
    while (cursor.NextChild(element)) {
      Add(element, false);
      cursor.SkipElement(element);
    }
    cursor.Leave(section);
  }
}

void ConfigLookups::Add(const XmlSlice& name, bool isSection) {
  lookups.emplace_back();
  name.CopyTo(lookups.back().name);
  lookups.back().isSection = isSection;
}

void ConfigLookups::MakeIn(KEXmlReader& reader) {
  ConfigLookup* const end = lookups.data() + lookups.size();
  ConfigLookup* alone = lookups.data();
  while (alone != end && !IsReadAlone(*alone)) ++alone;
  MakePart(reader, lookups.data(), alone);
  MakePart(reader, alone, end);
}

void ConfigLookups::MakePart(KEXmlReader& reader, ConfigLookup* from, const ConfigLookup* end) {
  Rewind(reader);
  const ConfigLookup* section = nullptr;
  const ConfigLookup* after = nullptr;
  KEString value;
  try {
    for (; from != end; ++from) {
      if (from->isSection) section = from;
      from->section = section;
      from->after = after;
      if (from->isSection && !IsEntered(*from)) continue;
      if (!from->isSection && section->outcome == LookupOutcome::kNotFound) {
        from->outcome = LookupOutcome::kWithoutSection;
        continue;
      }
      from->outcome = LookupOutcome::kNotFound;
      if (reader.End() || !reader.FindElementTag(from->name.Cstr())) continue;
      from->outcome = LookupOutcome::kFound;
      from->at = reader.Pos() - from->name.Length();
      after = from;
      if (!from->isSection) reader.GetElementValue(from->name.Cstr(), value);
    }
  } catch (const Xml::XmlException&) {
    // The element does not end. Who reads the document stops here as well.
  }
}

const ConfigLookup* ConfigLookups::Named(const XmlSlice& name) const {
  for (const ConfigLookup& lookup : lookups) {
    if (name.Is(lookup.name.Cstr(), lookup.name.Length())) return &lookup;
  }
  return nullptr;
}

const ConfigLookup* ConfigLookups::FoundAt(unsigned int position) const {
  for (const ConfigLookup& lookup : lookups) {
    if (lookup.at == position) return &lookup;
  }
  return nullptr;
}

bool ConfigLookups::HasFoundIn(unsigned int from, unsigned int to) const {
  for (const ConfigLookup& lookup : lookups) {
    if (lookup.at >= from && lookup.at < to) return true;
  }
  return false;
}

}  // namespace KELib
