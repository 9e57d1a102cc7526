// SPDX-License-Identifier: MIT
#include "datasync/FilterSpec.h"

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

void CreatePropertySet(KELib::KEVector<KELib::KEString>& list, KEXmlBuffer& xml) {
  const PropertyList sections(list);
  if (sections.propertySetError != nullptr) throw KELib::SystemException(sections.propertySetError);
  for (const auto& set : sections.propertySets) WritePropertySet(sections, set, xml);
}

void CreateSelectSet(KELib::KEVector<KELib::KEString>& list, KEXmlBuffer& xml) {
  const PropertyList sections(list);
  if (sections.traversalError != nullptr) throw KELib::SystemException(sections.traversalError);
  for (const auto& traversal : sections.traversals) WriteTraversal(sections, traversal, xml);
}

void CreateObjectSet(KE::Stub::ManagedObjectReference* root, KELib::KEVector<KELib::KEString>& list,
                     KEXmlBuffer& xml) {
  xml.StartAddElementTag(ObjectSet);
  xml.AddElementTagAttrAndValue(ObjTag, TypeTag, root->type.Cstr(), root->value.Cstr());
  xml.AddElementTagAndValue(SkipTag, KELib::STR_BOOLEAN_FALSE);
  CreateSelectSet(list, xml);
  xml.EndAddElementTag(ObjectSet);
}

void CreateFilterSpec(KE::Stub::ManagedObjectReference* root,
                      KELib::KEVector<KELib::KEString>& list, KEXmlBuffer& xml) {
  xml.StartAddElementTag(SpecTag);
  CreatePropertySet(list, xml);
  CreateObjectSet(root, list, xml);
  xml.EndAddElementTag(SpecTag);
}

}  // namespace KE::Service
