// SPDX-License-Identifier: MIT
//
// Between raw text and XML text. The stubs' fields hold XML text: decode it to show it.
// All functions replace `out`, which may not be the argument's own string. O(length).
// The forms with a buffer keep its length and capacity right.
#ifndef KECPP_XML_XMLESCAPE_H
#define KECPP_XML_XMLESCAPE_H

#include "foundation/KEExport.h"
#include "foundation/KEStringBuffer.h"

namespace KELib::Xml {

// Raw text to XML text: "&", "<" and ">" become entities. Null gives the empty text.
KECPP_API void EscapeText(const char* raw, KEString& out);
KECPP_API void EscapeText(const char* raw, KEStringBuffer& out);

// XML text to raw text: the five named entities and numeric references (as UTF-8); what is no
// entity stays as it is.
KECPP_API void DecodeEntities(const char* xmlText, KEString& out);
KECPP_API void DecodeEntities(const char* xmlText, KEStringBuffer& out);

// For text that is XML text already: escapes only what is not allowed there, which is "<", ">" and
// an
// "&" that begins no entity.
KECPP_API void EscapeStray(const char* xmlText, KEString& out);
KECPP_API void EscapeStray(const char* xmlText, KEStringBuffer& out);

}  // namespace KELib::Xml

#endif
