// SPDX-License-Identifier: MIT
#include "config/ConfigReport.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <functional>
#include <string>
#include <string_view>

#include "config/ConfigLookups.h"
#include "config/Malformation.h"
#include "foundation/Logger.h"
#include "xml/KEXmlCursor.h"
#include "xml/XmlException.h"

namespace KELib {

using Xml::XmlSlice;

namespace {

// The nesting is the writer's choice, the stack is ours: what is deeper is passed over.
constexpr int kMaxDepth = 8;
constexpr std::size_t kMaxLines = 10;
constexpr unsigned int kMaxName = 60;

enum class Why { kUnknown, kUnknownSection, kTakenFor, kBehind, kInside, kAnother, kHidden };

struct Ignored {
  XmlSlice name;
  Why why;
  const ConfigLookup* other;  // that the reason names; may be null
};

// Elements in the document's order. Those that do not fit are only counted.
class IgnoredList {
 public:
  std::size_t Count() const { return count; }
  std::size_t Kept() const { return std::min(count, kMaxLines); }

  void Add(const Ignored& one) {
    if (count < kMaxLines) items[count] = one;
    ++count;
  }

  void CutTo(std::size_t earlier) { count = earlier; }

  const Ignored* begin() const { return items; }
  const Ignored* end() const { return items + Kept(); }

 private:
  Ignored items[kMaxLines];
  std::size_t count = 0;
};

// In quotes and short, without control characters.
std::string Quoted(const XmlSlice& name) {
  unsigned int length = std::min(name.length, kMaxName);
  if (length < name.length) {
    while (length > 0 && (name.text[length] & 0xC0) == 0x80) --length;  // inside a character
  }
  std::string text(name.text, length);
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7F') c = '?';
  }
  return '"' + text + (length < name.length ? "...\"" : "\"");
}

std::string LineOf(const Ignored& one) {
  const std::string name = Quoted(one.name);
  const std::string other =
      one.other != nullptr ? '"' + std::string(one.other->name.Cstr()) + '"' : std::string();
  switch (one.why) {
    case Why::kUnknown:
      return "unknown element " + name + " is ignored";
    case Why::kUnknownSection:
      return "unknown section " + name + " is ignored";
    case Why::kTakenFor:
      return "unknown element " + name + " is read as " + other;
    case Why::kBehind:
      return name + " is ignored: it must come behind " + other;
    case Why::kInside:
      return name + " is ignored: it must be inside " + other;
    case Why::kAnother:
      return name + " is ignored: another one is read";
    default:
      return name + " is ignored: the search for it ends at the same word in a text";
  }
}

void LogLine(const std::string& line) {
  Logging::Log(nullptr, Logging::LOG_LEVEL_ERROR, "Configuration: %s", line.c_str());
}

class Walk {
 public:
  Walk(Xml::KEXmlReader& reader, const ConfigLookups& made)
      : text(reader.Str()), cursor(reader), lookups(made) {}

  void Run() {
    try {
      Children(0);
    } catch (const Xml::XmlException&) {
      // ReportMalformation has said so.
    }
  }

  void Log() const {
    for (const Ignored& one : ignored) LogLine(LineOf(one));
    const std::size_t more = ignored.Count() - ignored.Kept();
    if (more > 0) LogLine("and " + std::to_string(more) + " more");
  }

 private:
  unsigned int Offset(const char* place) const { return static_cast<unsigned int>(place - text); }

  bool Children(int depth) {
    bool any = false;
    for (XmlSlice name; cursor.NextChild(name); any = true) Element(name, depth);
    return any;
  }

  // What is inside a known element is its value.
  void Element(const XmlSlice& name, int depth) {
    const ConfigLookup* const known = lookups.Named(name);
    const std::size_t before = ignored.Count();
    bool hasChildren = false;
    if (depth == kMaxDepth || (known != nullptr && !known->isSection)) {
      cursor.SkipElement(name);
    } else if (cursor.Enter()) {
      hasChildren = Children(depth + 1);
      cursor.Leave(name);
    }
    if (const ConfigLookup* found = lookups.FoundAt(Offset(name.text))) {
      if (found != known) ignored.Add({name, Why::kTakenFor, found});
    } else if (known != nullptr) {
      JudgeKnown(name, *known, before);
    } else {
      JudgeUnknown(name, hasChildren, before);
    }
  }

  bool HasEffect(const XmlSlice& name) const {
    return lookups.HasFoundIn(Offset(name.text), Offset(cursor.Position()));
  }

  // One line for a section says it for all that is inside.
  void JudgeUnknown(const XmlSlice& name, bool hasChildren, std::size_t before) {
    if (lookups.IsRoot(name) || HasEffect(name)) return;
    ignored.CutTo(before);
    ignored.Add({name, hasChildren ? Why::kUnknownSection : Why::kUnknown, nullptr});
  }

  void JudgeKnown(const XmlSlice& name, const ConfigLookup& known, std::size_t before) {
    if (known.outcome == LookupOutcome::kNotMade) {
      if (known.isSection && !HasEffect(name)) JudgeByElements(name, known, before);
      return;
    }
    ignored.CutTo(before);
    ignored.Add(ReasonFor(name, known));
  }

  // A section that is not looked for is in the wrong place when the elements in it are.
  void JudgeByElements(const XmlSlice& name, const ConfigLookup& section, std::size_t before) {
    for (std::size_t at = before; at < ignored.Kept(); ++at) {
      const Ignored& one = ignored.begin()[at];
      const bool isBehind = one.why == Why::kBehind && one.other->section != &section;
      if (!isBehind && one.why != Why::kAnother) continue;
      const Ignored whole{name, one.why, isBehind ? one.other->section : nullptr};
      ignored.CutTo(before);
      ignored.Add(whole);
      return;
    }
  }

  Ignored ReasonFor(const XmlSlice& name, const ConfigLookup& known) const {
    if (known.outcome == LookupOutcome::kFound) return {name, Why::kAnother, nullptr};
    if (known.outcome == LookupOutcome::kWithoutSection) return {name, Why::kInside, known.section};
    const ConfigLookup* const after = known.after;
    if (after == nullptr || after->at < Offset(name.text)) return {name, Why::kHidden, nullptr};
    return {name, Why::kBehind, known.isSection ? after->section : after};
  }

  const char* const text;
  Xml::KEXmlCursor cursor;
  const ConfigLookups& lookups;
  IgnoredList ignored;
};

}  // namespace

// Two threads with two documents may both hear "news" again and again; neither misses a line.
bool IsNews(const KEString& document) {
  static std::atomic<std::size_t> last{0};
  if (Logging::GetDefaultLogger()->GetLevel() < Logging::LOG_LEVEL_ERROR) return true;
  std::string_view text(document.Cstr(), document.Length());
  text = text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
  const std::size_t hash = std::hash<std::string_view>()(text);
  return last.exchange(hash) != hash;
}

void ReportMalformation(const KEString& document) {
  try {
    Malformation found;
    if (document.Empty() || !FindMalformation(document, found)) return;
    LogLine("line " + std::to_string(found.line) + ": " + found.what.Cstr());
  } catch (const std::exception&) {
    // Not enough memory to say it.
  }
}

void ReportIgnored(Xml::KEXmlReader& reader) {
  try {
    ConfigLookups lookups;
    lookups.MakeIn(reader);
    Rewind(reader);
    Walk walk(reader, lookups);
    walk.Run();
    walk.Log();
  } catch (const std::exception&) {
    // Not enough memory to say it.
  }
  Rewind(reader);
}

}  // namespace KELib
