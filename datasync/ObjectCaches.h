// SPDX-License-Identifier: MIT
//
// The data caches of all kinds of objects, for those who apply update sets: looked up once instead
// of for every value, and again when data caches have come or gone since.
//
// Thread safety: of one thread. Lock before anything else is called; what is found is of no use any
//   more once the guard lets go.
#ifndef KECPP_DATASYNC_OBJECTCACHES_H
#define KECPP_DATASYNC_OBJECTCACHES_H

#include "foundation/HeldMutexes.h"
#include "foundation/KEString.h"
#include "foundation/MemoryAhead.h"
#include "instance/ChangeHub.h"
#include "instance/KETypeCache.h"
#include "instance/ObjectKinds.h"
#include "stub/base/KEStubBase.h"
#include "stub/base/StubCast.h"
#include "stub/classes/ManagedObjectReference.h"
#include "xml/KEXmlCursor.h"

namespace KE::Service {

class ObjectCaches {
 public:
  // Makes the stub of a new object, whose identifier has that length; the caller owns it.
  using MakeStub = KELib::Stub::KEStubBase* (*)(KE::Stub::ManagedObjectReference& object,
                                                unsigned int length);

  // `types` outlives the object.
  explicit ObjectCaches(KE::Instance::KETypeCache& types);

  using HeldMutexes = KELib::HeldMutexes<KE::Instance::kObjectKindCount>;

  // Takes the mutexes of the data caches of the kind's lock group, as far as there are any.
  void Lock(HeldMutexes& held, const KE::Instance::ObjectKind& kind);

  // The data cache of a kind; null while there is none.
  KE::Instance::KEDataCache* Of(KE::Instance::KindId kind) const {
    return caches[static_cast<std::size_t>(kind)];
  }

  // The stub under that identifier; null when it is not cached, or of another class.
  template <typename Stub>
  Stub* Find(KE::Instance::KindId kind, KELib::Xml::XmlSlice id) {
    return KELib::Stub::StubCast<Stub>(FindStub(kind, id));
  }

  // The stub of `object`, whose identifier is `id` as well; when it is not cached, `make` makes the
  // one that is filed. Throws SystemException "No Data Map found for type :..." when there is no
  // data cache. `isNew` says which it was.
  KELib::Stub::KEStubBase& FindOrFile(KE::Instance::KindId kind,
                                      KE::Stub::ManagedObjectReference& object,
                                      KELib::Xml::XmlSlice id, MakeStub make, bool& isNew);

  // Who learns of changes while somebody wants to; else null.
  KE::Instance::ChangeHub* Listener() const { return changes->IsOpen() ? changes : nullptr; }

 private:
  static constexpr std::size_t kCount = KE::Instance::kObjectKindCount;

  void LookUp();
  KELib::Stub::KEStubBase* FindStub(KE::Instance::KindId kind, KELib::Xml::XmlSlice id);

  KE::Instance::KETypeCache& types;
  KE::Instance::ChangeHub* const changes;
  unsigned int generation;
  KELib::MemoryAhead memory;  // of new stubs
  KELib::KEString names[kCount];
  KE::Instance::KEDataCache* caches[kCount];
  KELib::KEMutex* mutexes[kCount];  // of these caches
};

}  // namespace KE::Service

#endif
