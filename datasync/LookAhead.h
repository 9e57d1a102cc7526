// SPDX-License-Identifier: MIT
//
// Looks for the objects that an update set names next, and asks the memory for what is cached of
// them: in a large cache the look-up of an object otherwise takes longer than all the rest. It
// finds the objects whose head is written as the last one's. Nothing depends on what it finds.
//
// Thread safety: of one thread at a time.
#ifndef KECPP_DATASYNC_LOOKAHEAD_H
#define KECPP_DATASYNC_LOOKAHEAD_H

#include "datasync/LearnedText.h"
#include "instance/KEDataCache.h"
#include "xml/KEXmlCursor.h"

namespace KE::Service {

class LookAhead {
 public:
  // The cursor is in an object set; the object's head is `head`. The caller holds the mutex of
  // `cache`, in which objects of that kind are. Returns how many of the next objects it has found;
  // none while the cache is small. O(length of an object set), amortised.
  unsigned int Fetch(const KELib::Xml::KEXmlCursor& cursor, const LearnedText& head,
                     KE::Instance::KEDataCache& cache);

 private:
  // Each is a step further than the one behind it: its bucket, its entry, its stub are fetched.
  static constexpr unsigned int kMost = 3;

  struct Object {
    const char* text;
    unsigned int hash;  // of the identifier
  };

  bool FindNext(const KELib::Xml::KEXmlCursor& cursor, const LearnedText& head);

  Object objects[kMost];
  unsigned int count = 0;
  const char* searched = nullptr;  // up to here
};

}  // namespace KE::Service

#endif
