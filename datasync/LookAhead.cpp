// SPDX-License-Identifier: MIT
#include "datasync/LookAhead.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "foundation/KEString.h"
#include "instance/CacheFetch.h"

namespace KE::Service {

namespace {

constexpr unsigned int kSmallCache = 2048;  // objects: such a cache is near the processor
constexpr std::size_t kFar = 4096;          // characters: farther objects are not looked for yet
constexpr char kObjectSet[] = "<objectSet>";
constexpr std::size_t kTagLength = sizeof(kObjectSet) - 1;

}  // namespace

unsigned int LookAhead::Fetch(const KELib::Xml::KEXmlCursor& cursor, const LearnedText& head,
                              KE::Instance::KEDataCache& cache) {
  if (cache.Size() <= kSmallCache) return 0;
  const auto isPassed = [&](const Object& object) { return object.text < cursor.Position(); };
  count = static_cast<unsigned int>(std::remove_if(objects, objects + count, isPassed) - objects);
  const KE::Instance::CacheFetch fetch(cache);
  if (count > 0) fetch.Stub(objects[0].hash);
  if (count > 1) fetch.Entry(objects[1].hash);
  while (count < kMost && FindNext(cursor, head)) fetch.Bucket(objects[count - 1].hash);
  return count;
}

bool LookAhead::FindNext(const KELib::Xml::KEXmlCursor& cursor, const LearnedText& head) {
  const char* const end = cursor.Position() + std::min(cursor.Left(), kFar);
  searched = std::max(searched, cursor.Position());
  while (searched < end) {
    const auto* const tag = static_cast<const char*>(
        memmem(searched, static_cast<std::size_t>(end - searched), kObjectSet, kTagLength));
    searched = tag != nullptr ? tag + kTagLength : end;
    if (tag == nullptr) return false;
    const char* const id = head.Behind(searched, end);
    const char* const stop = id != nullptr ? KELib::Xml::FindNear('<', id, end) : nullptr;
    if (stop == nullptr) continue;
    objects[count++] = {tag, KELib::HashText(id, static_cast<unsigned int>(stop - id))};
    return true;
  }
  return false;
}

}  // namespace KE::Service
