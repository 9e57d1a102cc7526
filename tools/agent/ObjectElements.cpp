// SPDX-License-Identifier: MIT
#include "tools/agent/ObjectElements.h"

#include "tools/agent/PathElements.h"
#include "tools/agent/PropertyElements.h"

namespace tools::agent {
namespace {

using Form = Element::Form;

void OpenKey(XmlWriter& out, const char* name) {
  out.Open("KEYBINDING", {{"NAME", name}});
  out.Open("KEYVALUE", {{"VALUETYPE", "string"}, {"TYPE", "string"}});
}

void CloseKey(XmlWriter& out) {
  out.Close("KEYVALUE");
  out.Close("KEYBINDING");
}

// The name of an object whose key is in that column.
void AddObjectName(Element& element, const ClassRow& type, std::size_t keyColumn) {
  XmlWriter& out = element.Constant();
  out.Open("INSTANCENAME", {{"CLASSNAME", type.name}});
  OpenKey(out, CREATION_CLASS_NAME);
  out.Text(type.name);
  CloseKey(out);
  OpenKey(out, type.key->name);
  element.AddCell(Form::Text, keyColumn);
  CloseKey(out);
  out.Close("INSTANCENAME");
}

// Without a host: clients compare references, and the same object may be reached by many names.
void AddEnd(Element& element, const ClassRow& type, const PropertyRow& role) {
  const bool isOrigin = &role == &type.properties[0];
  XmlWriter& out = element.Constant();
  out.Open("VALUE.REFERENCE");
  out.Open("LOCALINSTANCEPATH");
  WriteLocalNamespace(out, NAMESPACE_NAME);
  AddObjectName(element, isOrigin ? OriginOf(type) : ResultOf(type), isOrigin ? 0 : 1);
  out.Close("LOCALINSTANCEPATH");
  out.Close("VALUE.REFERENCE");
}

// A property without a value has no VALUE: that is null, and not the empty text.
void AddProperty(Element& element, const ClassProperty& property, std::size_t column,
                 bool origins) {
  XmlWriter& out = element.Constant();
  OpenProperty(out, property, origins);
  element.AddCell(property.row->isArray ? Form::List : Form::Value, column);
  out.Close(PropertyElement(*property.row).name);
}

// The elements around name and instance. `addName` and `addInstance` add those to the element.
template <class AddName, class AddInstance>
Element Dressed(const ElementStyle& style, AddName addName, AddInstance addInstance) {
  Element element;
  XmlWriter& out = element.Constant();
  const auto addPath = [&] {
    out.Open("INSTANCEPATH");
    WriteNamespacePath(out, style.host, NAMESPACE_NAME);
    addName(element);
    out.Close("INSTANCEPATH");
  };
  switch (style.shape) {
    case Shape::Instance:
      addInstance(element);
      break;
    case Shape::Name:
      addName(element);
      break;
    case Shape::NamedInstance:
      out.Open("VALUE.NAMEDINSTANCE");
      addName(element);
      addInstance(element);
      out.Close("VALUE.NAMEDINSTANCE");
      break;
    case Shape::ObjectPath:
      out.Open("OBJECTPATH");
      addPath();
      out.Close("OBJECTPATH");
      break;
    case Shape::ObjectWithPath:
      out.Open("VALUE.OBJECTWITHPATH");
      addPath();
      addInstance(element);
      out.Close("VALUE.OBJECTWITHPATH");
      break;
    case Shape::Path:
      addPath();
      break;
    case Shape::WithPath:
      out.Open("VALUE.INSTANCEWITHPATH");
      addPath();
      addInstance(element);
      out.Close("VALUE.INSTANCEWITHPATH");
      break;
  }
  return element;
}

}  // namespace

bool HasInstance(Shape shape) {
  return shape != Shape::Name && shape != Shape::ObjectPath && shape != Shape::Path;
}

Element ObjectElement(const ElementStyle& style, const ClassRow& type,
                      const std::vector<ClassProperty>& properties) {
  return Dressed(
      style, [&](Element& element) { AddObjectName(element, type, 0); },
      [&](Element& element) {
        element.Constant().Open("INSTANCE", {{"CLASSNAME", type.name}});
        for (std::size_t i = 0; i < properties.size(); ++i) {
          AddProperty(element, properties[i], i + 1, style.origins);
        }
        element.Constant().Close("INSTANCE");
      });
}

Element LinkElement(const ElementStyle& style, const ClassRow& type,
                    const std::vector<ClassProperty>& properties) {
  const auto addName = [&](Element& element) {
    XmlWriter& out = element.Constant();
    out.Open("INSTANCENAME", {{"CLASSNAME", type.name}});
    for (const ClassProperty& role : PropertiesOf(type)) {
      out.Open("KEYBINDING", {{"NAME", role.row->name}});
      AddEnd(element, type, *role.row);
      out.Close("KEYBINDING");
    }
    out.Close("INSTANCENAME");
  };
  const auto addInstance = [&](Element& element) {
    XmlWriter& out = element.Constant();
    out.Open("INSTANCE", {{"CLASSNAME", type.name}});
    for (const ClassProperty& role : properties) {
      OpenProperty(out, role, style.origins);
      AddEnd(element, type, *role.row);
      out.Close("PROPERTY.REFERENCE");
    }
    out.Close("INSTANCE");
  };
  return Dressed(style, addName, addInstance);
}

}  // namespace tools::agent
