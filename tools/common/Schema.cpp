// SPDX-License-Identifier: MIT
#include "tools/common/Schema.h"

#include <strings.h>

#include <algorithm>

#include "tools/common/ClassTables.h"

namespace tools {
namespace {

int Compare(std::string_view a, std::string_view b) {
  const int order = strncasecmp(a.data(), b.data(), std::min(a.size(), b.size()));
  return order != 0 ? order : static_cast<int>(a.size()) - static_cast<int>(b.size());
}

bool IsBefore(const ClassRow* type, std::string_view name) {
  return Compare(type->name, name) < 0;
}

// Both are never freed: another thread may still read them while the process ends.
const std::vector<const ClassRow*>& InOrder() {
  static const auto& all = *[] {
    auto* rows = new std::vector<const ClassRow*>;
    for (const ClassTable table : {SystemClasses(), InteropClasses(), IndicationClasses()}) {
      for (std::size_t i = 0; i < table.count; ++i) rows->push_back(&table.rows[i]);
    }
    return rows;
  }();
  return all;
}

const std::vector<const ClassRow*>& ByName() {
  static const auto& sorted = *[] {
    auto* rows = new std::vector<const ClassRow*>(InOrder());
    std::sort(rows->begin(), rows->end(),
              [](const ClassRow* a, const ClassRow* b) { return IsBefore(a, b->name); });
    return rows;
  }();
  return sorted;
}

const ClassRow* ParentOf(const ClassRow& type) {
  return type.parent ? FindClass(type.parent) : nullptr;
}

void AddOwn(const ClassRow& type, const PropertyRow& row, std::vector<ClassProperty>& all) {
  for (ClassProperty& inherited : all) {
    if (!SameName(inherited.row->name, row.name)) continue;
    inherited.row = &row;
    inherited.isOwn = true;
    return;
  }
  all.push_back({&row, &type, true});
}

}  // namespace

std::vector<const ClassRow*> AllClasses(unsigned spaces) {
  std::vector<const ClassRow*> all;
  for (const ClassRow* type : InOrder()) {
    if (type->spaces & spaces) all.push_back(type);
  }
  return all;
}

const ClassRow* FindClass(std::string_view name, unsigned spaces) {
  const auto found = std::lower_bound(ByName().begin(), ByName().end(), name, IsBefore);
  const bool isThere = found != ByName().end() && SameName((*found)->name, name);
  return isThere && ((*found)->spaces & spaces) ? *found : nullptr;
}

bool DerivesFrom(const ClassRow& type, const ClassRow& ancestor) {
  const ClassRow* at = &type;
  while (at && at != &ancestor) at = ParentOf(*at);
  return at != nullptr;
}

std::vector<const ClassRow*> ConcreteClasses(const ClassRow& type) {
  std::vector<const ClassRow*> found;
  for (const ClassRow* candidate : InOrder()) {
    const bool hasInstances = candidate->kind || candidate->results;
    if (hasInstances && DerivesFrom(*candidate, type)) found.push_back(candidate);
  }
  return found;
}

std::vector<ClassProperty> PropertiesOf(const ClassRow& type) {
  std::vector<ClassProperty> all;
  if (const ClassRow* parent = ParentOf(type)) all = PropertiesOf(*parent);
  for (ClassProperty& inherited : all) inherited.isOwn = false;
  for (std::size_t i = 0; i < type.propertyCount; ++i) AddOwn(type, type.properties[i], all);
  return all;
}

const ClassRow& ClassOf(kecpp::Kind kind) {
  return **std::find_if(InOrder().begin(), InOrder().end(),
                        [kind](const ClassRow* type) { return type->kind == kind; });
}

const ClassRow& OriginOf(const ClassRow& assocClass) {
  return *FindClass(assocClass.properties[0].reference);
}

const ClassRow& ResultOf(const ClassRow& assocClass) {
  return *FindClass(assocClass.properties[1].reference);
}

bool SameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

const char* TypeName(CimType type) {
  switch (type) {
    case CimType::Boolean:
      return "boolean";
    case CimType::UInt16:
      return "uint16";
    case CimType::UInt32:
      return "uint32";
    case CimType::UInt64:
      return "uint64";
    case CimType::SInt64:
      return "sint64";
    case CimType::DateTime:
      return "datetime";
    default:
      return "string";
  }
}

}  // namespace tools
