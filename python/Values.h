// SPDX-License-Identifier: MIT
//
// The inventory's values as objects of Python: those of the data classes in kecpp/_values.py, whose
// fields are in the same order.
//
// Thread safety: the caller holds the interpreter lock.
#ifndef KECPP_PYTHON_VALUES_H
#define KECPP_PYTHON_VALUES_H

#include <kecpp/inventory.h>
#include <pybind11/pybind11.h>

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

namespace kecpp::python {

// An object of any kind, or none.
using AnyObject = std::variant<std::monostate, Host, Machine, Role, Privilege, Identity>;

// A change with the object as it was when the change was taken.
struct FullChange {
  Change change;
  AnyObject object;
};

// What is no UTF-8 is replaced: a daemon's broken text must not keep a caller from the others.
pybind11::object ToPython(const std::string& text);
pybind11::object ToPython(const AnyObject& object);
pybind11::object ToPython(const FullChange& change);
pybind11::object ToPython(const Status& status);

// A list of the objects.
template <class Object>
pybind11::list ToList(const std::vector<Object>& objects);

// A list for each of these fields, which are counted from 0, with a row for each object.
// Enumerations are plain texts.
template <class Object>
pybind11::list ToColumns(const std::vector<Object>& objects,
                         const std::vector<std::size_t>& fields);

// Lets `kecpp.Error` be raised where kecpp::Error is thrown.
void TranslateErrors();

}  // namespace kecpp::python

#endif
