// SPDX-License-Identifier: MIT
#include "tools/agent/CacheQueries.h"

#include <cstring>
#include <utility>

#include "tools/common/CacheReader.h"

namespace tools::agent {
namespace {

using namespace KE::Instance;
using namespace KE::Stub;
using KELib::KEMutexGuard;
using KELib::KEString;
using KELib::Stub::KEAssocStubBase;
using KELib::Stub::KEStubBase;
using KELib::Stub::KEStubRef;

std::string Raw(const char* xmlText) {
  KEString raw;
  KELib::Xml::DecodeEntities(xmlText, raw);
  return raw.Cstr();
}

// Servers may write an entity where none is needed, and the same character in several ways.
KEStubBase* FindAmongEntities(KEDataCache& cache, const std::string& key) {
  for (KEDataIterator it = cache.Iterator(); !it.End(); ++it) {
    const KEString& stored = (*it)->key;
    if (std::strchr(stored.Cstr(), '&') && Raw(stored.Cstr()) == key) return (*it)->value;
  }
  return nullptr;
}

// The caller holds the cache's mutex.
KEStubBase* FindStub(KEDataCache* cache, const std::string& key) {
  if (!cache) return nullptr;
  KEString stored;
  KELib::Xml::EscapeText(key.c_str(), stored);
  KEStubRef ref;
  cache->GetVal(stored, ref);
  return ref.HasData() ? ref.GetData() : FindAmongEntities(*cache, key);
}

std::size_t CountOf(KEDataCache& cache) {
  KEMutexGuard guard(cache.GetMutex());
  return cache.Size();
}

std::string KeyOfStub(const ClassRow& type, KEStubBase& stub) {
  std::string key;
  type.key->read(stub, key);
  return key;
}

// A link seen from one of its ends.
struct Seen {
  Link link;
  const ClassRow* partnerType;
  KEStubBase* partner;
  const char* ownRole;
  const char* partnerRole;
};

// False where the association has lost an end. A link answers the name of one end with the stub at
// the other.
bool See(KEAssocStubBase& assoc, const ClassRow& assocClass, const ClassRow& ownType,
         KEStubBase& own, Seen& seen) {
  KEString ownName(ownType.name);
  seen.partner = assoc.GetAssocInstance(ownName);
  if (!seen.partner) return false;
  const bool fromOrigin = std::strcmp(assoc.GetOriginClassName(), ownType.name) == 0;
  seen.ownRole = fromOrigin ? assoc.GetOriginRole() : assoc.GetResultRole();
  seen.partnerRole = fromOrigin ? assoc.GetResultRole() : assoc.GetOriginRole();
  seen.partnerType = &(fromOrigin ? ResultOf(assocClass) : OriginOf(assocClass));
  std::string ownKey = KeyOfStub(ownType, own);
  std::string partnerKey = KeyOfStub(*seen.partnerType, *seen.partner);
  if (!fromOrigin) std::swap(ownKey, partnerKey);
  seen.link = {&assocClass, std::move(ownKey), std::move(partnerKey)};
  return true;
}

bool RolePasses(const std::string& wanted, const char* role) {
  return wanted.empty() || SameName(wanted, role);
}

bool Passes(const LinkFilter& filter, const Seen& seen) {
  return (!filter.partnerClass || DerivesFrom(*seen.partnerType, *filter.partnerClass)) &&
         RolePasses(filter.ownRole, seen.ownRole) &&
         RolePasses(filter.partnerRole, seen.partnerRole);
}

bool HasEnd(const ClassRow& assocClass, const ClassRow& end) {
  return &OriginOf(assocClass) == &end || &ResultOf(assocClass) == &end;
}

// The association classes that a stub of `end` can be in. Only these are asked for: privileges and
// identities give all their links for any class.
std::vector<const ClassRow*> AssociationsOf(const ClassRow& end, const ClassRow* wanted) {
  std::vector<const ClassRow*> found;
  for (const ClassRow* type : AllClasses()) {
    if (type->isAssociation && !type->isAbstract && HasEnd(*type, end) &&
        (!wanted || DerivesFrom(*type, *wanted))) {
      found.push_back(type);
    }
  }
  return found;
}

// Calls `visit` with each link of a stub. Slots are null where a partner was deleted.
template <class Visit>
void ForEachLink(KEStubBase& stub, const ClassRow& assocClass, Visit visit) {
  KEString name(assocClass.name);
  for (auto it = stub.GetAssocIterator(name); !it.End(); ++it) {
    if (KEAssocStubBase* assoc = *it) visit(*assoc);
  }
}

}  // namespace

void ReadAll(KETypeCache& cache, Rows& rows) {
  KEDataCache* data = FindCache(cache, rows.Type());
  if (!data) return;
  rows.Expect(CountOf(*data));
  KEMutexGuard guard(data->GetMutex());
  for (KEDataIterator it = data->Iterator(); !it.End(); ++it) rows.Add(*(*it)->value);
}

bool ReadOne(KETypeCache& cache, const std::string& key, Rows& rows) {
  KEDataCache* data = FindCache(cache, rows.Type());
  if (!data) return false;
  KEMutexGuard guard(data->GetMutex());
  KEStubBase* stub = FindStub(data, key);
  if (stub) rows.Add(*stub);
  return stub != nullptr;
}

bool ReadLinks(KETypeCache& cache, const ObjectName& object, const LinkFilter& filter,
               const CopyLink& copy) {
  const auto classes = AssociationsOf(*object.type, filter.assocClass);
  GroupLock lock(cache, GroupOf(*object.type));
  KEStubBase* stub = FindStub(FindCache(cache, *object.type), object.key);
  if (!stub) return false;
  for (const ClassRow* assocClass : classes) {
    ForEachLink(*stub, *assocClass, [&](KEAssocStubBase& assoc) {
      Seen seen;
      if (See(assoc, *assocClass, *object.type, *stub, seen) && Passes(filter, seen)) {
        copy(seen.link, *seen.partnerType, *seen.partner);
      }
    });
  }
  return true;
}

std::vector<Link> ReadAllLinks(KETypeCache& cache, const ClassRow& assocClass) {
  std::vector<Link> links;
  const ClassRow& origin = OriginOf(assocClass);
  GroupLock lock(cache, GroupOf(origin));
  KEDataCache* data = FindCache(cache, origin);
  if (!data) return links;
  for (KEDataIterator it = data->Iterator(); !it.End(); ++it) {
    KEStubBase& stub = *(*it)->value;
    ForEachLink(stub, assocClass, [&](KEAssocStubBase& assoc) {
      Seen seen;
      if (See(assoc, assocClass, origin, stub, seen)) links.push_back(std::move(seen.link));
    });
  }
  return links;
}

bool ReadLink(KETypeCache& cache, const std::string& origin, const std::string& result,
              Link& link) {
  const ClassRow& originType = OriginOf(*link.type);
  const ClassRow& resultType = ResultOf(*link.type);
  GroupLock lock(cache, GroupOf(originType));
  KEStubBase* stub = FindStub(FindCache(cache, originType), origin);
  KEStubBase* partner = FindStub(FindCache(cache, resultType), result);
  if (!stub || !partner) return false;
  link.originKey = KeyOfStub(originType, *stub);
  link.resultKey = KeyOfStub(resultType, *partner);
  bool found = false;
  ForEachLink(*stub, *link.type, [&](KEAssocStubBase& assoc) {
    found = found || assoc.KeyEquals(resultType.name, link.resultKey.c_str());
  });
  return found;
}

}  // namespace tools::agent
