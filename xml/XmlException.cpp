// SPDX-License-Identifier: MIT
#include "xml/XmlException.h"

namespace KELib::Xml {

XmlException::~XmlException() = default;

void ThrowXmlException(const char* text) {
  throw XmlException(text);
}

void ThrowXmlException(KEString& text) {
  throw XmlException(text.Str(), text.Length());
}

void ThrowXmlException(KEString& text, const char* appended) {
  ThrowXmlException(text.Cstr(), appended);
}

void ThrowXmlException(const char* text, const char* appended) {
  KEString joined(text);
  joined += appended;
  ThrowXmlException(joined);
}

void ThrowExceptionOnLimits(KEString& input, unsigned int length, unsigned int pos) {
  if (input.Empty()) ThrowXmlException("Cannot use empty input XML");
  if (pos == KEString::NPos) ThrowXmlException("Cannot search beyond end of input XML");
  if (length < 2 || pos >= length - 1) {
    ThrowXmlException("Cannot read beyond length of input XML");
  }
}

}  // namespace KELib::Xml
