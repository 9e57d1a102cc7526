// SPDX-License-Identifier: MIT
//
// The module kecpp._kecpp, on which the package kecpp is written; kecpp/_kecpp.pyi describes it.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <array>

#include "Handles.h"

namespace py = pybind11;
using namespace kecpp::python;

namespace {

// Enumerations come as the number of the member.
template <class Enumeration>
Enumeration MemberOf(unsigned number, unsigned count) {
  if (number >= count) throw py::value_error("there is no such member");
  return static_cast<Enumeration>(number);
}

kecpp::Kind KindOf(unsigned number) {
  return MemberOf<kecpp::Kind>(number, 5);
}

std::unique_ptr<InventoryHandle> MakeInventory(const std::string& config, bool systems,
                                               unsigned authorization, bool inBackground,
                                               Seconds connectTimeout,
                                               const std::string& logLevel) {
  kecpp::Options options;
  options.config = config;
  options.systems = systems;
  options.authorization = MemberOf<kecpp::Authorization>(authorization, 3);
  options.connectInBackground = inBackground;
  options.logLevel = logLevel;
  return std::make_unique<InventoryHandle>(std::move(options), connectTimeout);
}

void DefineInventory(py::module_& module) {
  using Inventory = InventoryHandle;
  py::class_<Inventory>(module, "Inventory")
      .def(py::init(&MakeInventory))
      .def("close", &Inventory::Close)
      .def("state", &Inventory::State)
      .def("wait_for_state",
           [](const Inventory& self, unsigned state, unsigned long long connections,
              const std::string& reason, Seconds limit) {
             return self.WaitForState(MemberOf<kecpp::Status::State>(state, 3), connections, reason,
                                      limit);
           })
      .def("all", [](const Inventory& self, unsigned kind) { return self.All(KindOf(kind)); })
      .def("columns",
           [](const Inventory& self, unsigned kind, const std::vector<std::size_t>& fields) {
             return self.Columns(KindOf(kind), fields);
           })
      .def("find", [](const Inventory& self, unsigned kind,
                      const std::string& key) { return self.Find(KindOf(kind), key); })
      .def("count", [](const Inventory& self, unsigned kind) { return self.Count(KindOf(kind)); })
      .def("follow", &Inventory::Follow)
      .def("invoke",
           [](const Inventory& self, const std::string& method, const std::string& type,
              const std::string& key, const Arguments& arguments) {
             return self.Invoke(method, {type, key}, arguments);
           })
      .def("run_task", [](const Inventory& self, const std::string& method, const std::string& type,
                          const std::string& key, const Arguments& arguments) {
        return self.RunTask(method, {type, key}, arguments);
      });
}

void DefineFollower(py::module_& module) {
  py::class_<FollowerHandle>(module, "Follower")
      .def("wait", &FollowerHandle::Wait)
      .def("take", &FollowerHandle::Take)
      .def("close", &FollowerHandle::Close)
      .def("closed", &FollowerHandle::IsClosed);
}

}  // namespace

PYBIND11_MODULE(_kecpp, module) {
  TranslateErrors();
  DefineInventory(module);
  DefineFollower(module);
  module.def("close_all", &CloseAll);
  module.def("version", &kecpp::Version);
  SetMainThread(
      py::module_::import("threading").attr("main_thread")().attr("ident").cast<unsigned long>());
}
