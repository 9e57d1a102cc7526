// SPDX-License-Identifier: MIT
#include "xml/KEXmlCursor.h"

#include <initializer_list>

#include "xml/KEXmlReader.h"
#include "xml/XmlConstants.h"
#include "xml/XmlException.h"

namespace KELib::Xml {

namespace {

constexpr char kSectionStart[] = "<![CDATA[";
constexpr std::size_t kSectionStartLength = sizeof(kSectionStart) - 1;

// The characters that end a name, by their codes; the NUL behind the text among them.
struct NameEnds {
  bool ends[256] = {};
  constexpr NameEnds() {
    for (const char c : {' ', '\n', '\r', '\t', '>', '/', '=', '<', '\0'}) {
      ends[static_cast<unsigned char>(c)] = true;
    }
  }
};
constexpr NameEnds kNameEnds;

[[noreturn]] void ThrowMalformed() {
  throw XmlException(ERR_BAD_ELEM);
}

}  // namespace

KEXmlCursor::KEXmlCursor(KEXmlReader& source, KnownTagRests* remembered)
    : reader(source),
      begin(source.Str()),
      end(begin + source.GetInputLength()),
      at(begin + source.Pos()),
      inTag(source.State().WasLastType(XmlToken::elementName) ||
            source.State().WasLastType(XmlToken::attribute)),
      known(remembered) {}

void KEXmlCursor::MoveReader() const {
  reader.MoveTo(static_cast<unsigned int>(at - begin), XmlToken::elementEnded);
}

// The ">" of the start tag behind whose name `from` points; null where the name goes on, for an
// empty-element tag and for a tag without end.
//
// The place of a known tag is chosen for servers that write ` xsi:type="xsd:string"` and
// ` type="HostSystem" xsi:type=...`: by the first attribute's first letter, the first character of
// the value of "xsi:type" and the one behind "xsd:". Strings, numbers, lists and references then
// have separate places. With another server, one that declares namespaces in each tag say,
// alternating tags may share a place. Each is then scanned and kept again: 180 instructions a tag
// more than a known one takes, 340 for a tag of 70 characters, and 70 to 110 more than without any
// memory (callgrind, 64-bit). What is read is the same.
const char* KEXmlCursor::PlainTagEnd(const char* from) {
  constexpr std::ptrdiff_t kFirst = 11, kSecond = 15;
  KnownTagRests::Rest* rest = nullptr;
  if (known != nullptr && end - from > kSecond) {
    const auto telling = static_cast<unsigned int>(from[1] + from[kFirst] + (from[kSecond] >> 2));
    rest = &known->rests[telling % KnownTagRests::kRests];
  }
  if (rest != nullptr && rest->length > 0 && static_cast<std::size_t>(end - from) >= rest->length &&
      SameText(from, rest->text, rest->length)) {
    return from + rest->length - 1;
  }
  const char* stop = from;
  if (!IsBlank(*stop)) return nullptr;
  for (; *stop != '>'; ++stop) {
    if (stop >= end) return nullptr;
    if (*stop != '"' && *stop != '\'') continue;
    stop = Find(*stop, stop + 1);
    if (stop == nullptr) return nullptr;
  }
  if (stop[-1] == '/') return nullptr;
  if (rest != nullptr && static_cast<std::size_t>(stop - from) < KnownTagRests::kLongest) {
    rest->length = static_cast<unsigned int>(stop + 1 - from);
    std::memcpy(rest->text, from, rest->length);
  }
  return stop;
}

// The ">" of the tag that `from` points into; one inside an attribute's value does not count.
const char* KEXmlCursor::FindTagEnd(const char* from) const {
  for (; from < end && *from != '>'; ++from) {
    if (*from != '"' && *from != '\'') continue;
    from = Find(*from, from + 1);
    if (from == nullptr) ThrowMalformed();
  }
  if (from >= end) ThrowMalformed();
  return from;
}

bool KEXmlCursor::IsSection(const char* from) const {
  return static_cast<std::size_t>(end - from) >= kSectionStartLength &&
         std::memcmp(from, kSectionStart, kSectionStartLength) == 0;
}

// Passes a comment, a section, a declaration or an instruction that begins at `from`.
const char* KEXmlCursor::SkipMarkup(const char* from) const {
  const char* terminator = ">";
  const char* content = from + 2;
  if (from[1] == '?') terminator = "?>";
  if (IsSection(from)) terminator = "]]>";
  if (end - from >= 4 && std::memcmp(from, "<!--", 4) == 0) {
    terminator = "-->";
    content = from + 4;  // the opening dashes do not end it: "<!-->" goes on
  }
  const std::size_t size = std::strlen(terminator);
  const void* found = memmem(content, static_cast<std::size_t>(end - content), terminator, size);
  if (found == nullptr) ThrowMalformed();
  return static_cast<const char*>(found) + size;
}

XmlSlice KEXmlCursor::NameAt(const char* from) const {
  const char* stop = from;
  while (!kNameEnds.ends[static_cast<unsigned char>(*stop)]) ++stop;
  if (stop == from || stop >= end) ThrowMalformed();
  return {from, static_cast<unsigned int>(stop - from)};
}

bool KEXmlCursor::NextChild(XmlSlice& name) {
  for (;;) {
    if (*at != '<') at = Find('<', at);
    if (at == nullptr) {
      at = end;
      return false;
    }
    if (end - at < 2) ThrowMalformed();
    if (at[1] == '/') return false;
    if (at[1] != '!' && at[1] != '?') break;
    at = SkipMarkup(at);
  }
  name = NameAt(at + 1);
  at = name.text + name.length;
  inTag = true;
  return true;
}

bool KEXmlCursor::NextAttribute(XmlSlice& name, XmlSlice& value) {
  at = SkipBlanks(at);
  if (at >= end) ThrowMalformed();
  if (*at == '>' || *at == '/') return false;
  const XmlSlice found = NameAt(at);
  const char* quote = SkipBlanks(found.text + found.length);
  if (*quote != '=') ThrowMalformed();
  quote = SkipBlanks(quote + 1);
  if (*quote != '"' && *quote != '\'') ThrowMalformed();
  const char* stop = Find(*quote, quote + 1);
  if (stop == nullptr) ThrowMalformed();
  name = found;
  value = {quote + 1, static_cast<unsigned int>(stop - quote - 1)};
  at = stop + 1;
  return true;
}

bool KEXmlCursor::Enter() {
  const char* close = FindTagEnd(at);
  const bool empty = close > begin && close[-1] == '/';
  at = close + 1;
  inTag = false;
  return !empty;
}

void KEXmlCursor::LeaveContent(const XmlSlice& name) {
  XmlSlice child;
  while (NextChild(child)) SkipElement(child);
  if (end - at < 2 || !NameAt(at + 2).Is(name.text, name.length)) ThrowMalformed();
}

void KEXmlCursor::Leave(const XmlSlice& name) {
  LeaveContent(name);
  XmlSlice ended;
  PassEndTag(ended);
}

bool KEXmlCursor::PassEndTag(XmlSlice& name) {
  if (at[0] != '<' || at[1] != '/') return false;
  name = NameAt(at + 2);
  at = FindTagEnd(name.text + name.length) + 1;
  return true;
}

// Counts depth instead of calling itself: the nesting is the sender's choice, the stack is ours.
void KEXmlCursor::SkipElement(const XmlSlice& name) {
  if (!Enter()) return;
  XmlSlice inner;
  for (std::size_t depth = 1; depth > 0;) {
    if (NextChild(inner)) {
      if (Enter()) ++depth;
    } else if (PassEndTag(inner)) {
      --depth;
    } else {
      ThrowMalformed();
    }
  }
  if (!inner.Is(name.text, name.length)) ThrowMalformed();
}

void KEXmlCursor::AppendPiece(KEStringBuffer& joined, XmlSlice& whole, const char* from,
                              const char* to) const {
  if (from == to) return;
  const unsigned int n = static_cast<unsigned int>(to - from);
  if (whole.length == 0) {
    whole = {from, n};
    return;
  }
  // A second piece: the text is no longer one run of the input.
  if (whole.text != joined.Str()) {
    joined.Clear();
    joined.Append(whole.text, whole.length);
  }
  joined.Append(from, n);
  whole = {joined.Str(), joined.Length()};
}

XmlSlice KEXmlCursor::Text(const XmlSlice& name, KEStringBuffer& joined) {
  XmlSlice whole;
  if (!Enter()) return whole;
  bool behindSection = false;
  do {
    if (whole.length == 0) {
      at = SkipBlanks(at);
    } else if (behindSection) {
      at = SkipLayout(at);
    }
  } while (!TextPiece(joined, whole, behindSection));
  XmlSlice ended;
  if (!PassEndTag(ended) || !ended.Is(name.text, name.length)) ThrowMalformed();
  return whole;
}

// Passes the line ends at `from`, and the indentation of markup that follows them.
const char* KEXmlCursor::SkipLayout(const char* from) {
  const char* const line = SkipLineEnds(from);
  if (line == from) return from;
  const char* const next = SkipBlanks(line);
  return *next == '<' ? next : line;
}

// Takes the text up to the next markup, and that markup unless it is the end tag: then true.
// `behindSection` says whether a section was the last that gave text.
bool KEXmlCursor::TextPiece(KEStringBuffer& joined, XmlSlice& whole, bool& behindSection) {
  const char* stop = at < end ? Find('<', at) : nullptr;
  if (stop == nullptr || end - stop < 2) ThrowMalformed();
  AppendPiece(joined, whole, at, stop);
  if (stop != at) behindSection = false;
  at = stop;
  if (at[1] == '/') return true;
  if (IsSection(at)) {
    const char* behind = SkipMarkup(at);
    AppendPiece(joined, whole, at + kSectionStartLength, behind - 3);
    behindSection = true;
    at = behind;
  } else if (at[1] == '!' || at[1] == '?') {
    at = SkipMarkup(at);
  } else {
    XmlSlice child;
    NextChild(child);
    SkipElement(child);
  }
  return false;
}

bool KEXmlCursor::HasChildElements() const {
  KEXmlCursor ahead(*this);
  if (!ahead.Enter()) return false;
  for (;;) {
    ahead.at = SkipBlanks(ahead.at);
    if (end - ahead.at < 2 || *ahead.at != '<' || ahead.at[1] == '/') return false;
    if (ahead.at[1] != '!' && ahead.at[1] != '?') return true;
    if (ahead.IsSection(ahead.at)) return false;
    ahead.at = ahead.SkipMarkup(ahead.at);
  }
}

}  // namespace KELib::Xml
