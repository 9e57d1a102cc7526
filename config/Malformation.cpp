// SPDX-License-Identifier: MIT
#include "config/Malformation.h"

#include <algorithm>
#include <string>
#include <vector>

#include "xml/KEXmlCursor.h"
#include "xml/KEXmlReader.h"
#include "xml/XmlException.h"

namespace KELib {

namespace {

using Xml::KEXmlCursor;
using Xml::KEXmlReader;
using Xml::XmlSlice;

constexpr std::size_t kLongestName = 40;

// The content of these must not be shown, whatever it looks like.
bool IsSecret(const XmlSlice& name) {
  return name.Is("password") || name.Is("passPhrase");
}

struct OpenElement {
  XmlSlice name;
  bool isInSecret;

  bool HidesContent() const { return isInSecret || IsSecret(name); }
};

std::string TagText(const char* begin, const XmlSlice& name, bool hidden) {
  const std::size_t length = std::min<std::size_t>(name.length, kLongestName);
  return begin + (hidden ? "..." : std::string(name.text, length)) + ">";
}

class Check {
 public:
  explicit Check(KEXmlReader& source) : reader(source), cursor(source) {}

  bool Finds(Malformation& found) {
    try {
      while (problem.empty() && Step()) {
      }
    } catch (const Xml::XmlException&) {
      Blame(cursor.Position(), "a tag or a comment has no end");
    }
    if (problem.empty()) return false;
    found.line = 1 + static_cast<unsigned int>(std::count(reader.Str(), place, '\n'));
    found.what = problem.c_str();
    return true;
  }

 private:
  // False at the end of the document.
  bool Step() {
    XmlSlice name;
    if (cursor.NextChild(name)) {
      hasElement = true;
      if (cursor.Enter()) open.push_back({name, Hides()});
      return true;
    }
    const char* const tag = cursor.Position();
    if (cursor.PassEndTag(name)) {
      Close(name, tag);
      return true;
    }
    if (!open.empty()) {
      const OpenElement& last = open.back();
      Blame(last.name.text, TagText("<", last.name, last.isInSecret) + " is not closed");
    } else if (!hasElement) {
      Blame(reader.Str(), "there is no element");
    }
    return false;
  }

  void Close(const XmlSlice& name, const char* tag) {
    if (open.empty()) return Blame(tag, TagText("</", name, false) + " closes nothing");
    const OpenElement last = open.back();
    open.pop_back();
    if (name.Is(last.name.text, last.name.length)) return;
    Blame(tag, TagText("</", name, last.HidesContent()) + " stands where " +
                   TagText("<", last.name, last.isInSecret) + " is to be closed");
  }

  bool Hides() const { return !open.empty() && open.back().HidesContent(); }

  void Blame(const char* where, std::string what) {
    place = where;
    problem = std::move(what);
  }

  KEXmlReader& reader;
  KEXmlCursor cursor;
  std::vector<OpenElement> open;
  bool hasElement = false;
  const char* place = nullptr;
  std::string problem;
};

}  // namespace

bool FindMalformation(const KEString& document, Malformation& found) {
  KEString copy(document);
  KEXmlReader reader(copy, 0);
  return Check(reader).Finds(found);
}

}  // namespace KELib
