// SPDX-License-Identifier: MIT
#include "datasync/PropertyList.h"

#include "datasync/DataSyncConstants.h"

namespace KE::Service {

namespace {

const char* const kNoPropertySetType = "No ObjectType specified for PropertySet";
const char* const kNoSelectSetType = "No ObjectType specified for SelectSet";
const char* const kNoTraversalPath = "No Path Specified for Traversal Spec";

void KeepFirst(const char*& error, const char* text) {
  if (error == nullptr) error = text;
}

}  // namespace

PropertyList::PropertyList(KELib::KEVector<KELib::KEString>& source) : list(source) {
  while (next < list.Count()) {
    const unsigned int current = next++;
    if (Is(current, PropSep)) {
      ReadPropertySet();
    } else if (Is(current, TraversalSep)) {
      ReadTraversal();
    } else if (Is(current, CacheObjectSep)) {
      ReadNames(cacheTypes);
    } else if (Is(current, MethodSep)) {
      ReadNames(methods);
    }
  }
}

bool PropertyList::IsTaskWatch() const {
  return list.Count() == 4 && list[2].Equals(TypeTask);
}

bool PropertyList::Is(unsigned int index, const char* separator) const {
  return index < list.Count() && list[index].Equals(separator);
}

bool PropertyList::IsSectionStart(unsigned int index) const {
  return Is(index, PropSep) || Is(index, TraversalSep) || Is(index, CacheObjectSep) ||
         Is(index, MethodSep);
}

// Takes `separator` (null: none is wanted) and the element behind it, which must be no separator.
bool PropertyList::TakeOperand(const char* separator, unsigned int& operand) {
  if (separator != nullptr) {
    if (!Is(next, separator)) return false;
    ++next;
  }
  const bool missing = next >= list.Count() || IsSectionStart(next) || Is(next, ObjectSep) ||
                       Is(next, SelectSep) || Is(next, SkipMarker);
  if (missing) return false;
  operand = next++;
  return true;
}

void PropertyList::ReadPropertySet() {
  hasPropertySet = true;
  PropertySet set{};
  if (!TakeOperand(ObjectSep, set.type)) {
    KeepFirst(propertySetError, kNoPropertySetType);
    return;
  }
  ReadNames(set.paths);
  propertySets.push_back(set);
}

void PropertyList::ReadTraversal() {
  Traversal traversal{};
  if (!TakeOperand(nullptr, traversal.name) || !TakeOperand(ObjectSep, traversal.type)) {
    return SkipTraversal(kNoSelectSetType);
  }
  if (!TakeOperand(PropSep, traversal.path)) {
    return SkipTraversal(kNoTraversalPath);
  }
  if (Is(next, SkipMarker)) {
    traversal.skip = true;
    ++next;
  }
  while (Is(next, SelectSep)) {
    unsigned int select = 0;
    if (!TakeOperand(SelectSep, select)) {
      return SkipTraversal(kNoSelectSetType);
    }
    traversal.selects.push_back(select);
  }
  traversals.push_back(traversal);
}

// What is left of a broken traversal, its path too, must not be taken for a property set.
void PropertyList::SkipTraversal(const char* error) {
  KeepFirst(traversalError, error);
  while (next < list.Count()) {
    if (Is(next, PropSep) ? Is(next + 1, ObjectSep) : IsSectionStart(next)) return;
    ++next;
  }
}

void PropertyList::ReadNames(std::vector<unsigned int>& names) {
  while (next < list.Count() && !IsSectionStart(next)) names.push_back(next++);
}

}  // namespace KE::Service
