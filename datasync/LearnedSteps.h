// SPDX-License-Identifier: MIT
//
// What the objects of one kind look like in the text of an update set. A server writes a property
// with the same markup for each object, so the text from one value to the next one has mostly been
// read before. It is recognised by one comparison, line ends and indentation included, and nothing
// in it is looked up again.
//
// A step is the text from the end of a change set, or of an object's head, to the value in the next
// change set, and the property that the value belongs to. The step that followed the last time is
// compared first; else a few characters of the property's path lead to the step. Any other text is
// read as if nothing had been learned. It takes a step's place when it has come twice since that
// step was met.
//
// Thread safety: of one thread at a time.
// Memory: bounded, at most 25 KB.
#ifndef KECPP_DATASYNC_LEARNEDSTEPS_H
#define KECPP_DATASYNC_LEARNEDSTEPS_H

#include <cstdint>
#include <cstring>
#include <vector>

#include "xml/KEXmlCursor.h"

namespace KE::Service {

struct Property;

class LearnedSteps {
 public:
  // Takes the value of the change set at the cursor when that begins with a known step, and passes
  // the change set. `property` is set, which may be null. False otherwise, and the cursor does not
  // move.
  bool Take(KELib::Xml::KEXmlCursor& cursor, const Property*& property,
            KELib::Xml::XmlSlice& value) {
    if (expected == kNone || !TakeBehind(steps[expected], cursor, value)) {
      if (!Recognise(cursor, value)) return false;
    }
    Step& step = steps[expected];
    step.misses = 0;
    property = step.property;
    last = expected;
    expected = step.following;
    return true;
  }

  // A change set was read whose step begins at `begin` and ends in front of `value`; `path` is the
  // name of the property in it. Without memory nothing is learned.
  void Learn(const char* begin, const KELib::Xml::XmlSlice& path, const KELib::Xml::XmlSlice& value,
             const Property* property);

 private:
  static constexpr unsigned int kPlaces = 128;  // twice as many as steps
  static constexpr std::uint32_t kFirstPlace = 0x100000000ULL / kPlaces;
  static constexpr unsigned char kNone = 255;
  static constexpr std::size_t kLongest = 368;
  // Paths of properties begin alike ("config.", "guest."): the telling characters are those behind
  // the first seven, or the markup that follows a shorter path.
  static constexpr std::size_t kAlike = 7, kTelling = 8;

  struct Step {
    const Property* property;
    std::uint32_t telling;  // made of the characters that lead here
    unsigned short length;
    unsigned char misses;     // since it was met last
    unsigned char following;  // the step that came next the last time, kNone when not known
    char text[kLongest];
  };

  std::uint32_t Telling(const char* begin) const {
    std::uint32_t first = 0, second = 0;
    std::memcpy(&first, begin + tellingEnd - 8, 4);
    std::memcpy(&second, begin + tellingEnd - 4, 4);
    return first * 2654435761U + second * 2246822519U;
  }

  // The step to which these characters lead, kNone when there is none.
  unsigned char Find(std::uint32_t telling) const {
    for (unsigned int i = telling / kFirstPlace;; i = (i + 1) % kPlaces) {
      if (places[i] == kNone || steps[places[i]].telling == telling) return places[i];
    }
  }

  static bool TakeBehind(const Step& step, KELib::Xml::KEXmlCursor& cursor,
                         KELib::Xml::XmlSlice& value) {
    return cursor.TakeTextBehind(step.text, step.length, "</val>", "</val></changeSet>", value);
  }
  bool Recognise(KELib::Xml::KEXmlCursor& cursor, KELib::Xml::XmlSlice& value);
  void Begin(std::size_t end);
  Step* Add(std::uint32_t telling);

  std::vector<Step> steps;
  unsigned char last = kNone;      // that was taken
  unsigned char expected = kNone;  // that followed it the last time
  unsigned char places[kPlaces];   // indexes of `steps`
  std::size_t tellingEnd = 0;      // where the telling characters end in every step
  unsigned int otherTelling = 0;   // texts in which they end elsewhere, since a step was learned
};

}  // namespace KE::Service

#endif
