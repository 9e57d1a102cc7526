// SPDX-License-Identifier: MIT
#include "datasync/LearnedSteps.h"

#include <new>

namespace KE::Service {

namespace {

constexpr unsigned int kPatience = 2;  // misses after which something else is learned

}  // namespace

// Forgets all; from now on the telling characters of a step end there.
void LearnedSteps::Begin(std::size_t end) {
  steps.clear();
  std::memset(places, kNone, sizeof places);
  tellingEnd = end;
  expected = last = kNone;
}

// Takes a value by the step to which the telling characters lead, which is `expected` then. An end
// tag is no step.
bool LearnedSteps::Recognise(KELib::Xml::KEXmlCursor& cursor, KELib::Xml::XmlSlice& value) {
  if (steps.empty() || cursor.Left() < tellingEnd || cursor.Position()[1] == '/') return false;
  const unsigned char found = Find(Telling(cursor.Position()));
  if (found == kNone || !TakeBehind(steps[found], cursor, value)) return false;
  if (last != kNone) steps[last].following = found;
  expected = found;
  return true;
}

LearnedSteps::Step* LearnedSteps::Add(std::uint32_t telling) {
  if (steps.size() >= kPlaces / 2) return nullptr;
  try {
    steps.emplace_back();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  unsigned int i = telling / kFirstPlace;
  while (places[i] != kNone) i = (i + 1) % kPlaces;
  places[i] = static_cast<unsigned char>(steps.size() - 1);
  steps.back().telling = telling;
  steps.back().following = kNone;
  return &steps.back();
}

void LearnedSteps::Learn(const char* begin, const KELib::Xml::XmlSlice& path,
                         const KELib::Xml::XmlSlice& value, const Property* property) {
  const char* end = value.text;
  while (end[-1] != '>') --end;  // blanks in front of a value may differ
  const auto length = static_cast<std::size_t>(end - begin);
  const std::size_t telling = static_cast<std::size_t>(path.text - begin) + kAlike + kTelling;
  if (length > kLongest || telling > length) return;
  if (telling != tellingEnd) {
    if (!steps.empty() && ++otherTelling < kPatience) return;
    Begin(telling);
  }
  otherTelling = 0;
  const unsigned char known = Find(Telling(begin));
  Step* step = known != kNone ? &steps[known] : nullptr;
  if (step != nullptr && ++step->misses < kPatience) return;
  if (step == nullptr) step = Add(Telling(begin));
  if (step == nullptr) return;
  step->property = property;
  step->length = static_cast<unsigned short>(length);
  step->misses = 0;
  std::memcpy(step->text, begin, length);
}

}  // namespace KE::Service
