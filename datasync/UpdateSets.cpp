// SPDX-License-Identifier: MIT
#include "datasync/UpdateSets.h"

#include "datasync/UpdateSetWalk.h"
#include "datasync/Watches.h"
#include "instance/ChangeHub.h"
#include "xml/KEXmlCursor.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {

UpdateSets::UpdateSets(Watches& owner, KE::Instance::KETypeCache& typeCache)
    : watches(owner), types(typeCache), room(typeCache) {}

void UpdateSets::Apply(KELib::Xml::KEXmlReader& r, KE::Stub::ManagedObjectReference* unknown) {
  const KE::Instance::ChangeHub::Batch batch(types.Changes());
  try {
    RoomLoan loan(room, types);
    KELib::Xml::KEXmlCursor cursor(r, &loan.Room().tags);
    UpdateSetWalk walk(watches, types, cursor, loan.Room());
    if (!walk.Run() && unknown != nullptr) {
      unknown->type = loan.Room().update.filter.type;
      unknown->value = loan.Room().update.filter.value;
    }
    cursor.MoveReader();
    watches.ReleaseAfterSet(false);
  } catch (...) {
    watches.ReleaseAfterSet(true);
    throw;
  }
}

}  // namespace KE::Service
