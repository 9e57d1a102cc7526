// SPDX-License-Identifier: MIT
//
// A value with element content: lists of privileges, roles, permissions and references, and the
// answers of property methods, item by item.
//
// Privileges, roles and permissions are full replacements: what a list no longer names is deleted.
// What a list of references does is in the table of its object's kind (ObjectProperties.cpp).
//
// Thread safety: the caller holds the filter-table mutex and the caches that LockFor takes.
#ifndef KECPP_DATASYNC_LISTVALUE_H
#define KECPP_DATASYNC_LISTVALUE_H

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include "datasync/ObjectTarget.h"
#include "datasync/RoleMemory.h"
#include "datasync/UpdateInfo.h"
#include "foundation/KEHashmap.h"
#include "foundation/KEString.h"
#include "foundation/KEStringBuffer.h"
#include "instance/KECacheGuard.h"
#include "instance/KETypeCache.h"
#include "xml/KEXmlCursor.h"

namespace KELib::Xml {
class KEXmlReader;
}
namespace KE::Stub {
class Zorbel_Identity;
class Zorbel_Privilege;
class Zorbel_Role;
}  // namespace KE::Stub

namespace KE::Service {

class ListValue {
 public:
  using Seen = KELib::KEHashmap<KELib::KEString, bool>;

  // `ui.name` says which list it is, `ui.obj` whose.
  ListValue(UpdateInfo& ui, KE::Instance::KETypeCache& cache, ObjectCaches& caches,
            RoleMemory& roles, KELib::Xml::KEXmlCursor& cursor);

  // Takes the caches that the list named by `ui` can touch.
  static void LockFor(UpdateInfo& ui, KE::Instance::KECacheGuard& guard);

  // Applies the list at `r`, and moves `r` behind it. Takes the caches that LockFor
  // takes; the caller holds the filter-table mutex.
  static void ApplyAt(UpdateInfo& ui, KELib::Xml::KEXmlReader& r, KE::Instance::KETypeCache& types,
                      RoleMemory& roles);

  // The cursor is in the start tag of the value `element`: applies and passes it. A list that
  // does not belong to the current object's type is passed over.
  void ApplyElement(const KELib::Xml::XmlSlice& element);

  // The cursor is in front of items without an element around them.
  void ApplyBareItems();

  // Applies the items named `ui.valueType` up to the enclosing end tag, then deletes what the list
  // did not name.
  void ApplyItems(KE::Instance::KEDataCache* primary, KE::Instance::KEDataCache* secondary);

  // Applies the item `element` in whose start tag the cursor is, and passes it. Its key goes
  // into `seen` unless that is null. An item without its key is passed over. A new privilege costs
  // a look at all that the roles name.
  void ApplySingle(const KELib::Xml::XmlSlice& element, KE::Instance::KEDataCache* primary,
                   KE::Instance::KEDataCache* secondary, Seen* seen);

  // Deletes every stub whose key was not seen.
  static void DeleteUnseen(KE::Instance::KEDataCache& cache, Seen& seen);

 private:
  enum class Kind { privileges, roles, permissions, references, other };

  static Kind KindOf(const KELib::KEString& name, const Property* references);
  bool BelongsToObject() const;
  KE::Instance::KEDataCache* Cache(const char* typeName);

  // The cache that the list fills, and the one to whose stubs its items are linked; null for
  // others.
  void ChooseCaches(KE::Instance::KEDataCache*& primary, KE::Instance::KEDataCache*& secondary);
  void ApplyItem(const KELib::Xml::XmlSlice& element, KE::Instance::KEDataCache* primary,
                 KE::Instance::KEDataCache* secondary, Seen* seen);
  void ApplyPrivilege(const KELib::Xml::XmlSlice& element, KE::Instance::KEDataCache& cache,
                      Seen* seen);
  void ApplyRole(const KELib::Xml::XmlSlice& element, KE::Instance::KEDataCache& cache,
                 KE::Instance::KEDataCache* privileges, Seen* seen);
  void ApplyPermission(const KELib::Xml::XmlSlice& element, KE::Instance::KEDataCache& cache,
                       KE::Instance::KEDataCache* roleCache, Seen* seen);
  void ApplyReferences();
  void ReadRoleInfo(const KELib::Xml::XmlSlice& element, KELib::KEString& label,
                    KELib::KEString& summary);
  void TellFeeds(const KELib::Stub::KEStubBase& stub);
  void LinkPrivileges(KE::Stub::Zorbel_Role& role, RoleMemory::PrivilegeIds& ids,
                      KE::Instance::KEDataCache* privileges);
  void LinkGranted();
  void LinkRememberedPrivileges();
  void Sweep(KE::Instance::KEDataCache& cache, Seen& seen);
  void ReadText(const KELib::Xml::XmlSlice& element, KELib::KEString& out);

  UpdateInfo& ui;
  KE::Instance::KETypeCache& types;
  RoleMemory& memory;
  KELib::Xml::KEXmlCursor& cursor;
  ObjectCaches& caches;
  ObjectTarget target;
  const Property* const references;  // null unless the list is one of the object's own kind
  const Kind kind;
  bool newPrivileges = false;
  std::vector<KE::Stub::Zorbel_Privilege*> named;  // by the role at hand

  // What a list of permissions grants, in the order of the identities' first items.
  std::vector<std::pair<KE::Stub::Zorbel_Identity*, std::vector<KE::Stub::Zorbel_Role*>>> grants;
  std::unordered_map<KE::Stub::Zorbel_Identity*, std::size_t> grantOf;
  KELib::KEStringBuffer joined;  // room for texts that comments or sections split
};

}  // namespace KE::Service

#endif
