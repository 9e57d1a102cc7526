// SPDX-License-Identifier: MIT
//
// The look-ups that read a configuration, and what each of them finds in a document. Names and
// order are those of the default document.
//
// Thread safety: none.
#ifndef KECPP_CONFIG_CONFIGLOOKUPS_H
#define KECPP_CONFIG_CONFIGLOOKUPS_H

#include <vector>

#include "foundation/KEString.h"
#include "xml/KEXmlCursor.h"
#include "xml/KEXmlReader.h"

namespace KELib {

enum class LookupOutcome {
  kNotMade,         // the reader needs no look-up for it, or had to stop before
  kWithoutSection,  // its section was not found
  kNotFound,
  kFound,
};

struct ConfigLookup {
  KEString name;
  bool isSection = false;
  const ConfigLookup* section = nullptr;  // the one that it belongs to; a section to itself
  LookupOutcome outcome = LookupOutcome::kNotMade;
  unsigned int at = KEString::NPos;     // where the name that was found begins
  const ConfigLookup* after = nullptr;  // the last one that was found before: the reader's place
};

class ConfigLookups {
 public:
  ConfigLookups();
  ConfigLookups(const ConfigLookups&) = delete;
  ConfigLookups& operator=(const ConfigLookups&) = delete;

  // Makes them all, from the reader's start. One pass over the document for each look-up at most.
  void MakeIn(Xml::KEXmlReader& reader);

  // Null when there is none.
  const ConfigLookup* Named(const Xml::XmlSlice& name) const;
  const ConfigLookup* FoundAt(unsigned int position) const;

  bool HasFoundIn(unsigned int from, unsigned int to) const;
  bool IsRoot(const Xml::XmlSlice& name) const { return name.Is(root.Cstr(), root.Length()); }

 private:
  void Add(const Xml::XmlSlice& name, bool isSection);
  void MakePart(Xml::KEXmlReader& reader, ConfigLookup* from, const ConfigLookup* end);

  KEString root;
  std::vector<ConfigLookup> lookups;  // of constant size after construction
};

// Puts the reader back to the start of its text. Needs no memory.
void Rewind(Xml::KEXmlReader& reader);

}  // namespace KELib

#endif
