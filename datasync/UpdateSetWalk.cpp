// SPDX-License-Identifier: MIT
#include "datasync/UpdateSetWalk.h"

#include <optional>

#include "datasync/DataSyncConstants.h"
#include "datasync/ListValue.h"
#include "datasync/ObjectTarget.h"
#include "datasync/Watches.h"
#include "foundation/Logger.h"

namespace KE::Service {

namespace {

using KELib::Xml::XmlSlice;

void ClearReference(KE::Stub::ManagedObjectReference& ref) {
  ref.type.Clear();
  ref.value.Clear();
}

void LogSkipped(const KE::Stub::ManagedObjectReference& filter) {
  KELib::KEStringBuffer text(0);
  text.Append("Skipped update for : Type : ");
  text.Append(filter.type);
  text.Append(" Value : ");
  text.Append(filter.value);
  text.Append("\n");
  KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE, "%s", text.Str());
}

}  // namespace

// The locks of one object set, taken when its first change is met. While it was not locked another
// thread may have stopped the filter: then nothing of the object is touched.
class UpdateSetWalk::ObjectLock {
 public:
  explicit ObjectLock(UpdateSetWalk& owner) : walk(owner) {}
  ~ObjectLock() {
    walk.wasCached = target.has_value() && target->WasCached();
    target.reset();  // the feeds learn of the object while it is locked
    walk.room.caches.Unlock();
  }

  // True when the changes may be applied. Outside the analysis: the guards live as long as this.
  bool Take() KECPP_NO_THREAD_SAFETY_ANALYSIS {
    if (!taken) TakeAll();
    return target.has_value();
  }

  ObjectTarget& Target() { return *target; }

  // Whether changes of an object of that kind may be applied, unless Take says that none may.
  bool Fits(const KE::Instance::ObjectKind& kind) const {
    return !taken || (target.has_value() && &target->Kind() == &kind);
  }

 private:
  void TakeAll() KECPP_NO_THREAD_SAFETY_ANALYSIS {
    taken = true;
    if (walk.ui.syncInfo == nullptr) return;
    if (walk.tableServed) RetakeTable();
    walk.tableServed = true;
    UpdateInfo& info = walk.ui;
    if (info.syncInfo == nullptr) return;
    target.emplace(info, *walk.objectKind, walk.objectId, walk.types, walk.room.objects);
    walk.room.objects.Lock(walk.room.caches, target->Kind());
    walk.FetchNext(target->Kind());
  }

  void RetakeTable() KECPP_NO_THREAD_SAFETY_ANALYSIS {
    walk.table.Unlock();
    walk.table.Lock(*walk.watches.GetMutex());
    walk.FindFilter();
  }

  UpdateSetWalk& walk;
  bool taken = false;
  std::optional<ObjectTarget> target;
};

UpdateSetWalk::UpdateSetWalk(Watches& tables, KE::Instance::KETypeCache& typeCache,
                             KELib::Xml::KEXmlCursor& text, WalkRoom& kept)
    : watches(tables),
      roles(tables.RolesNoLock()),
      stale(tables.StaleNoLock()),
      types(typeCache),
      cursor(text),
      room(kept),
      ui(kept.update) {
  ui.syncInfo = nullptr;  // a walk that threw may have left something here
  ClearObject();
}

bool UpdateSetWalk::Run() {
  while (EnterFilterSet()) {
    if (!ApplyFilterSet()) return false;
  }
  return true;
}

bool UpdateSetWalk::EnterFilterSet() {
  XmlSlice name, version;
  const char* const begin = cursor.Position();
  const auto take = [&](const char* text, std::size_t length) {
    return cursor.TakeTextBehind(text, length, "</version>", "</version><filterSet>", version);
  };
  if (room.begin.Recognise(take)) return true;
  for (;;) {
    if (cursor.PassTag("<filterSet>")) return true;
    if (cursor.PassStartTag("<returnval")) continue;
    if (cursor.TakeText("<version", "</version>", version)) {
      room.begin.Learn(begin, version);
      continue;
    }
    if (cursor.PassTag("</returnval>")) return false;
    if (cursor.NextChild(name)) {
      if (name.Is("filterSet")) {
        if (cursor.Enter()) return true;
      } else if (name.Is("returnval")) {
        cursor.Enter();
      } else {
        cursor.SkipElement(name);
      }
    } else if (!cursor.PassEndTag(name) || name.Is("returnval")) {
      return false;
    }
  }
}

// The cursor is in the filter set's content. False when nobody watches its filter.
bool UpdateSetWalk::ApplyFilterSet() {
  XmlSlice name, type, id;
  bool begun = false, closed = false;
  const char* const begin = cursor.Position();
  if (PassKnownFilter()) {
    begun = true;
  } else if (cursor.TakeText("<filter type=\"", "</filter>", type, id)) {
    begun = true;
    SetFilter(type, id);
    if (room.filter.Learn(begin, cursor.Position())) {
      room.filterParts = {room.filter.Part(begin, type), room.filter.Part(begin, id), true};
    }
  }
  if (begun && !BeginFilter()) return false;
  while (!closed) {
    if (begun && cursor.PassTag("<objectSet>")) {
      ApplyObjectSet();
    } else if (cursor.PassTag("</filterSet>")) {
      closed = true;
    } else if (!cursor.NextChild(name)) {
      break;
    } else if (name.Is("filter")) {
      type = ReadType();
      id = cursor.Text(name, room.valueText);
      begun = true;
      SetFilter(type, id);
      if (!BeginFilter()) return false;
    } else if (!begun) {
      cursor.SkipElement(name);
    } else if (name.Is("objectSet")) {
      if (cursor.Enter()) ApplyObjectSet();
    } else if (name.Is("missingSet")) {
      ApplyMissingSet();
    } else {
      cursor.SkipElement(name);
    }
  }
  if (!closed) cursor.Leave("filterSet");
  EndFilter();
  return true;
}

// Passes the filter's element when it is that of the set before.
bool UpdateSetWalk::PassKnownFilter() {
  FilterHead& known = room.filterParts;
  const auto pass = [&](const char* text, std::size_t length) {
    return cursor.PassText(text, length);
  };
  if (!room.filter.Recognise(pass)) return false;
  if (!known.isCurrent) SetFilter(known.type, known.id);
  known.isCurrent = true;
  return true;
}

void UpdateSetWalk::SetFilter(const XmlSlice& type, const XmlSlice& id) {
  room.filterParts.isCurrent = false;
  room.current.generation = 0;
  room.filterType.Set(type);
  room.filterId.Set(id);
}

// Outside the analysis, as all that concerns the table mutex here: the guard outlives the call.
void UpdateSetWalk::FindFilter() KECPP_NO_THREAD_SAFETY_ANALYSIS {
  CurrentFilter& current = room.current;
  if (current.generation != watches.FilterGenerationNoLock()) {
    current = {watches.FindFilterNoLock(ui.filter), watches.FilterGenerationNoLock()};
  }
  ui.syncInfo = current.info;
}

bool UpdateSetWalk::BeginFilter() KECPP_NO_THREAD_SAFETY_ANALYSIS {
  table.Lock(*watches.GetMutex());
  FindFilter();
  if (ui.syncInfo == nullptr) {
    LogSkipped(ui.filter);
    return false;
  }
  if (ui.syncInfo->waiter != nullptr) ui.syncInfo->received = true;
  stale.NoteFilterSet(ui.syncInfo->classes);
  return true;
}

// The table mutex is held since the filter was last looked up.
void UpdateSetWalk::EndFilter() KECPP_NO_THREAD_SAFETY_ANALYSIS {
  DataSyncInfo* info = ui.syncInfo;
  if (info != nullptr) watches.ReleaseFilledNoLock(*info);
  ui.syncInfo = nullptr;
}

// In a set that changes one object after the other: of new ones nothing is there to be fetched.
void UpdateSetWalk::FetchNext(const KE::Instance::ObjectKind& kind) {
  if (!wasCached || &kind != room.headParts.objectKind) return;
  KE::Instance::KEDataCache* const cache = room.objects.Of(kind.id);
  if (cache != nullptr) ahead.Fetch(cursor, room.head, *cache);
}

// The cursor is in the object set's content.
void UpdateSetWalk::ApplyObjectSet() {
  ObjectLock lock(*this);
  TakeHead();
  XmlSlice name;
  bool closed = false;
  while (!closed) {
    ApplyLearned(lock);
    const char* const begin = cursor.Position();
    if (cursor.PassTag("</objectSet>")) {
      closed = true;
    } else if (cursor.PassTag("<changeSet>")) {
      ApplyChangeSet(lock, begin);
    } else if (!cursor.NextChild(name)) {
      break;
    } else if (name.Is("kind")) {
      SetKind(cursor.Text(name, room.valueText));
    } else if (name.Is("obj")) {
      ReadObject(name);
    } else if (!name.Is("changeSet")) {
      cursor.SkipElement(name);
    } else if (cursor.Enter()) {
      ApplyChangeSet(lock, begin);
    }
  }
  if (!closed) cursor.Leave("objectSet");
  if (ui.syncInfo != nullptr) stale.Name(ui.obj);
  if (leaves && lock.Take()) lock.Target().Remove();
  leaves = false;
  ClearObject();
}

// Takes what a change is and to which property, as servers write it. What assigns may have no `op`.
bool UpdateSetWalk::TakePropertyAndOp(XmlSlice& property, XmlSlice& op) {
  return cursor.TakeText("<name", "</name>", property) &&
         (cursor.PassTag("<op>assign</op>") || cursor.TakeText("<op", "</op>", op));
}

// Applies the change sets at the cursor that look like those of the object before.
void UpdateSetWalk::ApplyLearned(ObjectLock& lock) {
  if (leaves || !lock.Fits(*objectKind)) return;
  const Property* property = nullptr;
  XmlSlice value;
  LearnedSteps& steps = room.learned[objectKind->Index()];
  while (steps.Take(cursor, property, value)) {
    if (lock.Take()) lock.Target().Put(property, value);
  }
}

// The cursor is in the content of the change set, whose step began at `begin`.
void UpdateSetWalk::ApplyChangeSet(ObjectLock& lock, const char* begin) {
  if (leaves || !lock.Take()) {
    cursor.Leave("changeSet");
    return;
  }
  XmlSlice name, property, op, value;
  if (TakePropertyAndOp(property, op) && property.length > 0 &&
      cursor.TakeText("<val", "</val>", value)) {
    lock.Target().Apply(property, op, value);
    if (cursor.PassTag("</changeSet>")) {
      const Property* found = nullptr;
      if (lock.Target().IsPlain(property, op, found)) {
        room.learned[lock.Target().Kind().Index()].Learn(begin, property, value, found);
      }
      return;
    }
  }
  while (cursor.NextChild(name)) {
    if (name.Is("name")) {
      property = cursor.Text(name, room.propertyText);
    } else if (name.Is("op")) {
      op = cursor.Text(name, room.opText);
    } else if (name.Is("val") && property.length > 0) {
      ApplyValue(lock, name, property, op);
    } else {
      cursor.SkipElement(name);
    }
  }
  cursor.Leave("changeSet");
}

void UpdateSetWalk::ApplyValue(ObjectLock& lock, const XmlSlice& val, const XmlSlice& property,
                               const XmlSlice& op) {
  if (!cursor.HasChildElements()) {
    lock.Target().Apply(property, op, cursor.Text(val, room.valueText));
    return;
  }
  property.CopyTo(ui.name);
  ListValue(ui, types, room.objects, roles, cursor).ApplyElement(val);
  ui.name.Clear();
  ui.valueType.Clear();
}

void UpdateSetWalk::ApplyMissingSet() {
  if (!cursor.Enter()) return;
  XmlSlice name;
  while (cursor.NextChild(name)) {
    if (name.Is("obj")) {
      ReadObject(name);
    } else {
      cursor.SkipElement(name);
    }
  }
  cursor.Leave("missingSet");
  ObjectLock lock(*this);
  if (lock.Take()) lock.Target().Remove();
  ClearObject();
}

// Takes the kind and the object as servers write them.
void UpdateSetWalk::TakeHead() {
  XmlSlice kind, type, id;
  ObjectHead& known = room.headParts;
  const auto take = [&](const char* text, std::size_t length) {
    return cursor.TakeTextBehind(text, length, "</obj>", id);
  };
  if (room.head.Recognise(take)) {
    leaves = known.leaves;
    room.objectType.Set(known.type);
    room.objectId.Set(id);
    objectId = id;
    objectKind = known.objectKind;
    return;
  }
  const char* const begin = cursor.Position();
  if (cursor.TakeText("<kind", "</kind>", kind)) SetKind(kind);
  if (!cursor.TakeText("<obj type=\"", "</obj>", type, id)) return;
  SetObject(type, id);
  if (kind.length > 0 && room.head.Learn(begin, id)) {
    known = {room.head.Part(begin, type), objectKind, leaves};
  }
}

void UpdateSetWalk::SetObject(const XmlSlice& type, const XmlSlice& id) {
  room.objectType.Set(type);
  room.objectId.Set(id);
  objectId = id;
  objectKind = &KE::Instance::KindOf(std::string_view(type.text, type.length));
}

void UpdateSetWalk::ClearObject() {
  ClearReference(ui.obj);
  objectId = {};
  objectKind = &KE::Instance::kAnyOther;
}

void UpdateSetWalk::SetKind(const XmlSlice& kind) {
  leaves = kind.Is("leave");
}

void UpdateSetWalk::ReadObject(const XmlSlice& name) {
  const XmlSlice type = ReadType();
  SetObject(type, cursor.Text(name, room.valueText));
  objectId.text = ui.obj.value.Cstr();  // the other text may be in the room that values get
}

// The type is in the first attribute that is not the schema type.
XmlSlice UpdateSetWalk::ReadType() {
  XmlSlice attribute, value;
  while (cursor.NextAttribute(attribute, value)) {
    if (!attribute.Is("xsi:type") && !attribute.StartsWith("xmlns", 5)) return value;
  }
  return {};
}

}  // namespace KE::Service
