// SPDX-License-Identifier: MIT
//
// Searching an XML text backwards for end tags.
#ifndef KECPP_XML_XMLENDTAGS_H
#define KECPP_XML_XMLENDTAGS_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib::Xml {

// Searches backwards for the last end tag that begins in front of `pos`. On success `pos` is the
// position of its "<" and `name` its name; otherwise both stay. O(length).
KECPP_API bool GetPrevElementEndTag(KEString& text, unsigned int& pos, KEString& name);

// The same for the end tag of one name.
KECPP_API bool BackupToElementEndTag(const char* name, KEString& text, unsigned int& pos);

}  // namespace KELib::Xml

#endif
