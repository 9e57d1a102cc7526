// SPDX-License-Identifier: MIT
//
// Malformed or exhausted XML input.
#ifndef KECPP_XML_XMLEXCEPTION_H
#define KECPP_XML_XMLEXCEPTION_H

#include "foundation/KEException.h"
#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib::Xml {

class KECPP_API XmlException : public Exception {
 public:
  using Exception::Exception;
  ~XmlException() override;
};

// Throw XmlException: with a fixed text (borrowed), with a copy of a text, or with two texts
// joined.
[[noreturn]] KECPP_API void ThrowXmlException(const char* text);
[[noreturn]] KECPP_API void ThrowXmlException(KEString& text);
[[noreturn]] KECPP_API void ThrowXmlException(KEString& text, const char* appended);
[[noreturn]] KECPP_API void ThrowXmlException(const char* text, const char* appended);

// Throws XmlException for an empty input, for a position of NPos and for one at which fewer than
// two characters are left.
KECPP_API void ThrowExceptionOnLimits(KEString& input, unsigned int length, unsigned int pos);

}  // namespace KELib::Xml

#endif
