// SPDX-License-Identifier: MIT
#include "datasync/FilterWriter.h"

#include "datasync/DataSyncConstants.h"
#include "datasync/PropertyList.h"
#include "foundation/KEConstants.h"
#include "foundation/KEException.h"
#include "stub/classes/ManagedObjectReference.h"
#include "xml/KEXmlBuffer.h"

namespace KE::Service {

namespace {

using KELib::Xml::KEXmlBuffer;

void WritePropertySet(const PropertyList& list, const PropertyList::PropertySet& set,
                      KEXmlBuffer& xml) {
  xml.StartAddElementTag(PropSetTag);
  xml.AddElementTagAndValue(TypeTag, list.At(set.type).Cstr());
  xml.AddElementTagAndValue(PropAll, KELib::STR_BOOLEAN_FALSE);
  for (unsigned int path : set.paths) {
    xml.AddElementTagAndValue(PathSetTag, list.At(path).Cstr());
  }
  xml.EndAddElementTag(PropSetTag);
}

void WriteTraversal(const PropertyList& list, const PropertyList::Traversal& traversal,
                    KEXmlBuffer& xml) {
  xml.StartAddElementTag(SelectSetTag);
  xml.AddElementTypeValue(TraversalSpecType);
  xml.AddElementTagAndValue(Name, list.At(traversal.name).Cstr());
  xml.AddElementTagAndValue(TypeTag, list.At(traversal.type).Cstr());
  xml.AddElementTagAndValue(PathTag, list.At(traversal.path).Cstr());
  xml.AddElementTagAndValue(SkipTag,
                            traversal.skip ? KELib::STR_BOOLEAN_TRUE : KELib::STR_BOOLEAN_FALSE);
  for (unsigned int select : traversal.selects) {
    xml.StartAddElementTag(SelectSetTag);
    xml.AddElementTagAndValue(Name, list.At(select).Cstr());
    xml.EndAddElementTag(SelectSetTag);
  }
  xml.EndAddElementTag(SelectSetTag);
}

}  // namespace

void WritePropertySets(const PropertyList& list, KEXmlBuffer& xml) {
  if (list.propertySetError != nullptr) throw KELib::SystemException(list.propertySetError);
  for (const auto& set : list.propertySets) WritePropertySet(list, set, xml);
}

void WriteSelectSets(const PropertyList& list, KEXmlBuffer& xml) {
  if (list.traversalError != nullptr) throw KELib::SystemException(list.traversalError);
  for (const auto& traversal : list.traversals) WriteTraversal(list, traversal, xml);
}

void WriteObjectSet(const KE::Stub::ManagedObjectReference& root, const PropertyList& list,
                    KEXmlBuffer& xml) {
  xml.StartAddElementTag(ObjectSet);
  xml.AddElementTagAttrAndValue(ObjTag, TypeTag, root.type.Cstr(), root.value.Cstr());
  xml.AddElementTagAndValue(SkipTag, KELib::STR_BOOLEAN_FALSE);
  WriteSelectSets(list, xml);
  xml.EndAddElementTag(ObjectSet);
}

void WriteFilterSpec(const KE::Stub::ManagedObjectReference& root, const PropertyList& list,
                     KEXmlBuffer& xml) {
  xml.StartAddElementTag(SpecTag);
  WritePropertySets(list, xml);
  WriteObjectSet(root, list, xml);
  xml.EndAddElementTag(SpecTag);
}

}  // namespace KE::Service
