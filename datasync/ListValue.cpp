// SPDX-License-Identifier: MIT
#include "datasync/ListValue.h"

#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "datasync/DataSyncConstants.h"
#include "datasync/LearnedText.h"
#include "foundation/StringUtil.h"
#include "instance/ChangeHub.h"
#include "instance/KEDataCache.h"
#include "stub/base/KEStubRef.h"
#include "stub/base/StubCast.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/RoleLinks.h"
#include "stub/classes/Zorbel_Identity.h"
#include "stub/classes/Zorbel_Privilege.h"
#include "stub/classes/Zorbel_Role.h"

namespace KE::Service {

namespace {

using KE::Instance::KEDataCache;
using KE::Stub::Zorbel_Identity;
using KE::Stub::Zorbel_Privilege;
using KE::Stub::Zorbel_Role;
using KELib::KEString;
using KELib::Xml::XmlSlice;

template <typename Stub>
Stub* Find(KEDataCache& cache, KEString& key) {
  KELib::Stub::KEStubRef ref;
  cache.GetVal(key, ref);
  return KELib::Stub::StubCast<Stub>(ref.GetData());
}

// Finds the stub under `key` or files a new one whose `keyField` is the key.
template <typename Stub, typename Owner>
Stub* FindOrCreate(KEDataCache& cache, KEString& key, KEString Owner::*keyField,
                   bool* created = nullptr) {
  if (Stub* found = Find<Stub>(cache, key)) return found;
  auto stub = std::make_unique<Stub>();
  (*stub).*keyField = key;
  cache.SetVal(key, stub.get());
  if (created != nullptr) *created = true;
  return stub.release();
}

// True the first time a key is seen; without a record every time is the first.
bool Note(ListValue::Seen* seen, KEString& key) {
  if (seen == nullptr) return true;
  if (seen->Contains(key)) return false;
  seen->Insert(key, true);
  return true;
}

// Takes the text over. True when it is another one.
bool Assign(KEString& field, KEString& text) {
  const bool differs = !field.Equals(text);
  field.Transfer(text);
  return differs;
}

// Lets the feeds know of links.
class LinkNews : public KE::Stub::LinkWatcher {
 public:
  explicit LinkNews(KE::Instance::KETypeCache& types) : feeds(types.Listener()) {}
  void LinkChanged(KELib::Stub::KEStubBase& end, KELib::Stub::KEStubBase& other) override {
    if (feeds != nullptr) feeds->Changed(&end, &other);
  }

 private:
  KE::Instance::ChangeHub* const feeds;
};

}  // namespace

ListValue::ListValue(UpdateInfo& update, KE::Instance::KETypeCache& cache, ObjectCaches& objects,
                     RoleMemory& roles, KELib::Xml::KEXmlCursor& text)
    : ui(update),
      types(cache),
      memory(roles),
      cursor(text),
      caches(objects),
      target(update, cache, objects),
      references(ObjectTarget::FindList(target.Kind().id, update.name)),
      kind(KindOf(update.name, references)),
      joined(0) {}

ListValue::Kind ListValue::KindOf(const KEString& name, const Property* references) {
  if (references != nullptr) return Kind::references;
  if (name.Equals("privilegeList")) return Kind::privileges;
  if (name.Equals("roleList")) return Kind::roles;
  if (name.Equals(MethodRetrieveAllPermissions)) return Kind::permissions;
  return Kind::other;
}

void ListValue::LockFor(UpdateInfo& ui, KE::Instance::KECacheGuard& guard) {
  const KE::Instance::KindId object = KE::Instance::KindOf(ui.obj.type).id;
  switch (KindOf(ui.name, ObjectTarget::FindList(object, ui.name))) {
    case Kind::references:
      guard.LockFor(ui.obj.type);
      break;
    case Kind::other:
      break;
    default:
      guard.LockAuthorization();
  }
}

// Within an update set only the caches of the object's own type are locked.
bool ListValue::BelongsToObject() const {
  if (kind == Kind::references) return true;
  return ui.obj.type.Empty() || ui.obj.type.Equals(TypeAuthorizationManager);
}

KEDataCache* ListValue::Cache(const char* typeName) {
  KEString type(typeName);
  return types.GetDataCache(type);
}

void ListValue::ReadText(const XmlSlice& element, KEString& out) {
  cursor.Text(element, joined).CopyTo(out);
}

// --- lists ---------------------------------------------------------------------------------------

void ListValue::ApplyAt(UpdateInfo& ui, KELib::Xml::KEXmlReader& r,
                        KE::Instance::KETypeCache& types, RoleMemory& roles) {
  KE::Instance::KECacheGuard caches(&types);
  LockFor(ui, caches);
  KELib::Xml::KEXmlCursor cursor(r);
  ObjectCaches objects(types);
  ListValue value(ui, types, objects, roles, cursor);
  if (cursor.InStartTag()) {
    value.ApplyElement({ui.valueTag, static_cast<unsigned int>(std::strlen(ui.valueTag))});
  } else {
    value.ApplyBareItems();
  }
  cursor.MoveReader();
}

void ListValue::ApplyElement(const XmlSlice& element) {
  if (kind == Kind::other || !BelongsToObject()) {
    cursor.SkipElement(element);
    return;
  }
  const std::size_t prefix = std::strlen(ArrayOfPrefix);
  XmlSlice name, value, type;
  while (cursor.NextAttribute(name, value)) {
    if (name.Is("xsi:type") || type.length == 0) type = value;
  }
  const bool isList = type.StartsWith(ArrayOfPrefix, prefix);
  if (isList) {
    KEString item;
    XmlSlice{type.text + prefix, type.length - static_cast<unsigned int>(prefix)}.CopyTo(item);
    ui.valueType.Transfer(item);
  } else if (type.length == 0 && ui.arrayItemTag != nullptr) {
    ui.valueType = ui.arrayItemTag;
  } else {
    ApplySingle(element, nullptr, nullptr, nullptr);
    return;
  }
  if (!cursor.Enter()) return;
  ApplyItems(nullptr, nullptr);
  cursor.Leave(element);
}

void ListValue::ApplyBareItems() {
  if (ui.arrayItemTag == nullptr) return;
  ui.valueType = ui.arrayItemTag;
  ApplyItems(nullptr, nullptr);
}

void ListValue::ChooseCaches(KEDataCache*& primary, KEDataCache*& secondary) {
  static const struct {
    Kind kind;
    const char* primary;
    const char* secondary;
  } kCaches[] = {
      {Kind::privileges, KE::Stub::Zorbel_PrivilegeClass, nullptr},
      {Kind::roles, KE::Stub::Zorbel_RoleClass, KE::Stub::Zorbel_PrivilegeClass},
      {Kind::permissions, KE::Stub::Zorbel_IdentityClass, KE::Stub::Zorbel_RoleClass},
  };
  if (kind == Kind::references) primary = caches.Of(target.Kind().id);
  for (const auto& entry : kCaches) {
    if (entry.kind != kind) continue;
    primary = Cache(entry.primary);
    secondary = entry.secondary != nullptr ? Cache(entry.secondary) : nullptr;
  }
}

void ListValue::ApplyItems(KEDataCache* primary, KEDataCache* secondary) {
  if (primary == nullptr) ChooseCaches(primary, secondary);
  Seen seen;
  const bool wasEmpty = primary == nullptr || primary->Size() == 0;
  if (kind == Kind::references && primary != nullptr) ApplyReferences();
  XmlSlice item;
  while (cursor.NextChild(item)) {
    if (primary != nullptr && item.Is(ui.valueType.Cstr(), ui.valueType.Length())) {
      ApplyItem(item, primary, secondary, &seen);
    } else {
      cursor.SkipElement(item);
    }
  }
  LinkGranted();
  if (!wasEmpty && kind != Kind::references && kind != Kind::other) Sweep(*primary, seen);
  if (newPrivileges) LinkRememberedPrivileges();
}

void ListValue::Sweep(KEDataCache& cache, Seen& seen) {
  if (cache.Size() <= seen.Count()) return;
  DeleteUnseen(cache, seen);
  if (kind == Kind::roles) memory.KeepOnly(seen);
}

void ListValue::DeleteUnseen(KEDataCache& cache, Seen& seen) {
  std::vector<KEString> gone;
  for (auto it = cache.Iterator(); !it.End(); ++it) {
    if (!seen.Contains(it->key)) gone.push_back(it->key);
  }
  for (KEString& key : gone) cache.RemoveValNoLock(key);
}

// --- items ---------------------------------------------------------------------------------------

void ListValue::ApplySingle(const XmlSlice& element, KEDataCache* primary, KEDataCache* secondary,
                            Seen* seen) {
  ApplyItem(element, primary, secondary, seen);
  if (newPrivileges) LinkRememberedPrivileges();
}

void ListValue::ApplyItem(const XmlSlice& element, KEDataCache* primary, KEDataCache* secondary,
                          Seen* seen) {
  if (primary == nullptr) ChooseCaches(primary, secondary);
  if (kind == Kind::references) {
    target.ApplyItem(*references, cursor.Text(element, joined));
  } else if (primary == nullptr || kind == Kind::other) {
    cursor.SkipElement(element);
  } else if (kind == Kind::privileges) {
    ApplyPrivilege(element, *primary, seen);
  } else if (kind == Kind::roles) {
    ApplyRole(element, *primary, secondary, seen);
  } else {
    ApplyPermission(element, *primary, secondary, seen);
  }
}

void ListValue::ApplyPrivilege(const XmlSlice& element, KEDataCache& cache, Seen* seen) {
  if (!cursor.Enter()) return;
  KEString id, title;
  XmlSlice field;
  while (cursor.NextChild(field)) {
    if (field.Is("privId")) {
      ReadText(field, id);
    } else if (field.Is("name")) {
      ReadText(field, title);
    } else {
      cursor.SkipElement(field);
    }
  }
  cursor.Leave(element);
  if (id.Empty()) return;
  auto* stub =
      FindOrCreate<Zorbel_Privilege>(cache, id, &Zorbel_Privilege::InstanceID, &newPrivileges);
  if (Assign(stub->ElementName, title)) TellFeeds(*stub);
  Note(seen, id);
}

void ListValue::TellFeeds(const KELib::Stub::KEStubBase& stub) {
  if (KE::Instance::ChangeHub* const feeds = caches.Listener()) feeds->Changed(&stub);
}

void ListValue::ReadRoleInfo(const XmlSlice& element, KEString& label, KEString& summary) {
  if (!cursor.Enter()) return;
  XmlSlice field;
  while (cursor.NextChild(field)) {
    if (field.Is("label")) {
      ReadText(field, label);
    } else if (field.Is("summary")) {
      ReadText(field, summary);
    } else {
      cursor.SkipElement(field);
    }
  }
  cursor.Leave(element);
}

void ListValue::ApplyRole(const XmlSlice& element, KEDataCache& cache, KEDataCache* privileges,
                          Seen* seen) {
  if (!cursor.Enter()) return;
  KEString id, system, title, label, summary;
  RoleMemory::PrivilegeIds ids;
  XmlSlice field;
  while (cursor.NextChild(field)) {
    if (field.Is("roleId")) {
      ReadText(field, id);
    } else if (field.Is("system")) {
      ReadText(field, system);
    } else if (field.Is("name")) {
      ReadText(field, title);
    } else if (field.Is("info")) {
      ReadRoleInfo(field, label, summary);
    } else if (field.Is("privilege")) {
      ReadText(field, ids.emplace_back());
    } else {
      cursor.SkipElement(field);
    }
  }
  cursor.Leave(element);
  if (id.Empty()) return;
  auto* role = FindOrCreate<Zorbel_Role>(cache, id, &Zorbel_Role::Name);
  KEString roleType(KELib::StringUtil::ParseBool(system.Cstr()) ? "SystemDefined" : "UserDefined");
  bool differs = Assign(role->ElementName, title);
  differs |= Assign(role->Caption, label);
  differs |= Assign(role->Description, summary);
  differs |= Assign(role->RoleType, roleType);
  if (differs) TellFeeds(*role);
  Note(seen, id);
  LinkPrivileges(*role, ids, privileges);
  memory.Remember(id, std::move(ids));
}

void ListValue::LinkPrivileges(Zorbel_Role& role, RoleMemory::PrivilegeIds& ids,
                               KEDataCache* privileges) {
  named.clear();
  for (KEString& id : ids) {
    auto* privilege = privileges != nullptr ? Find<Zorbel_Privilege>(*privileges, id) : nullptr;
    if (privilege != nullptr) named.push_back(privilege);
  }
  LinkNews news(types);
  KE::Stub::SetPrivileges(role, named, &news);
}

// Privileges have come that roles may have named before.
void ListValue::LinkRememberedPrivileges() {
  KEDataCache* roleCache = Cache(KE::Stub::Zorbel_RoleClass);
  KEDataCache* privileges = Cache(KE::Stub::Zorbel_PrivilegeClass);
  if (roleCache == nullptr) return;
  for (auto it = roleCache->Iterator(); !it.End(); ++it) {
    auto* role = dynamic_cast<Zorbel_Role*>(it->value);
    RoleMemory::PrivilegeIds* ids = role != nullptr ? memory.Of(role->Name) : nullptr;
    if (ids != nullptr) LinkPrivileges(*role, *ids, privileges);
  }
}

void ListValue::ApplyPermission(const XmlSlice& element, KEDataCache& cache, KEDataCache* roleCache,
                                Seen* seen) {
  if (!cursor.Enter()) return;
  KEString principal, group, roleId;
  XmlSlice field;
  while (cursor.NextChild(field)) {
    if (field.Is("principal")) {
      ReadText(field, principal);
    } else if (field.Is("group")) {
      ReadText(field, group);
    } else if (field.Is("roleId")) {
      ReadText(field, roleId);
    } else {
      cursor.SkipElement(field);
    }
  }
  cursor.Leave(element);
  if (principal.Empty() || KELib::StringUtil::ParseBool(group.Cstr())) return;
  auto* identity = FindOrCreate<Zorbel_Identity>(cache, principal, &Zorbel_Identity::InstanceID);
  auto* role = roleCache != nullptr ? Find<Zorbel_Role>(*roleCache, roleId) : nullptr;
  if (seen == nullptr) {  // an item by itself adds to the identity's roles
    LinkNews news(types);
    if (role != nullptr) KE::Stub::LinkMember(*role, *identity, &news);
    return;
  }
  if (Note(seen, principal)) {
    grantOf[identity] = grants.size();
    grants.emplace_back(identity, std::vector<Zorbel_Role*>());
  }
  if (role != nullptr) grants[grantOf[identity]].second.push_back(role);
}

// A list names all roles of the identities that are in it.
void ListValue::LinkGranted() {
  LinkNews news(types);
  for (const auto& [identity, roles] : grants) KE::Stub::SetRoles(*identity, roles, &news);
  grants.clear();
  grantOf.clear();
}

// Those of a list's items that are written as servers write them.
void ListValue::ApplyReferences() {
  target.BeginList(*references);
  if (!ui.valueType.Equals("ManagedObjectReference")) return;
  XmlSlice id;
  LearnedText tag;
  const auto take = [&](const char* text, std::size_t length) {
    return cursor.TakeTextBehind(text, length, "</ManagedObjectReference>", id);
  };
  for (;;) {
    const char* const begin = cursor.Position();
    if (!tag.Recognise(take)) {
      if (!cursor.TakeText("<ManagedObjectReference", "</ManagedObjectReference>", id)) return;
      tag.Learn(begin, id);
    }
    target.ApplyItem(*references, id);
  }
}

}  // namespace KE::Service
