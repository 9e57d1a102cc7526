// SPDX-License-Identifier: MIT
#include "Values.h"

#include <array>
#include <chrono>
#include <optional>
#include <tuple>
#include <type_traits>

namespace py = pybind11;

namespace kecpp::python {
namespace {

// The classes of kecpp/_values.py. They are never let go: the process may end on any thread.
struct Classes {
  py::object host;
  py::object machine;
  py::object role;
  py::object privilege;
  py::object identity;
  py::object change;
  py::object status;
  py::object error;
  py::object datetime;
  py::object utc;
  // Members in the order of the C++ enumerations, and their texts.
  std::array<py::object, 5> kinds;
  std::array<py::object, 3> changeTypes;
  std::array<py::object, 3> states;
  std::array<py::object, 4> powerStates;
  std::array<py::object, 4> powerTexts;
};

template <std::size_t N>
std::array<py::object, N> MembersOf(const py::object& enumeration) {
  std::array<py::object, N> members;
  std::size_t count = 0;
  for (const py::handle member : enumeration) {
    members.at(count++) = py::reinterpret_borrow<py::object>(member);
  }
  return members;
}

// Made under the interpreter lock, and without a static guard's lock: importing may give the
// former up while another thread has it and waits for the latter.
const Classes& All() {
  static const Classes* all = nullptr;
  if (all != nullptr) return *all;
  const py::module_ values = py::module_::import("kecpp._values");
  const py::module_ datetime = py::module_::import("datetime");
  auto* made = new Classes;
  made->host = values.attr("Host");
  made->machine = values.attr("Machine");
  made->role = values.attr("Role");
  made->privilege = values.attr("Privilege");
  made->identity = values.attr("Identity");
  made->change = values.attr("Change");
  made->status = values.attr("Status");
  made->error = values.attr("Error");
  made->datetime = datetime.attr("datetime");
  made->utc = datetime.attr("timezone").attr("utc");
  made->kinds = MembersOf<5>(values.attr("Kind"));
  made->changeTypes = MembersOf<3>(values.attr("ChangeType"));
  made->states = MembersOf<3>(values.attr("State"));
  made->powerStates = MembersOf<4>(values.attr("PowerState"));
  for (std::size_t i = 0; i < made->powerTexts.size(); ++i) {
    made->powerTexts[i] = made->powerStates[i].attr("value");
  }
  all = made;
  return *all;
}

// --- fields --------------------------------------------------------------------------------------

const py::object& ClassOf(const Host&) {
  return All().host;
}
const py::object& ClassOf(const Machine&) {
  return All().machine;
}
const py::object& ClassOf(const Role&) {
  return All().role;
}
const py::object& ClassOf(const Privilege&) {
  return All().privilege;
}
const py::object& ClassOf(const Identity&) {
  return All().identity;
}

auto FieldsOf(const Host& of) {
  return std::tie(of.key, of.name, of.description, of.uuid, of.vendor, of.model,
                  of.operationalStatus, of.machines);
}
auto FieldsOf(const Machine& of) {
  return std::tie(of.key, of.name, of.description, of.uuid, of.guestFullName, of.guestHostName,
                  of.guestIPAddress, of.path, of.powerStateText, of.powerState,
                  of.operationalStatus, of.host);
}
auto FieldsOf(const Role& of) {
  return std::tie(of.key, of.name, of.caption, of.description, of.type, of.privileges,
                  of.identities);
}
auto FieldsOf(const Privilege& of) {
  return std::tie(of.key, of.name, of.roles);
}
auto FieldsOf(const Identity& of) {
  return std::tie(of.key, of.roles);
}

py::object FieldOf(const std::string& text) {
  return ToPython(text);
}
py::object FieldOf(unsigned number) {
  return py::int_(number);
}
py::object FieldOf(PowerState state) {
  return All().powerStates.at(static_cast<std::size_t>(state));
}
py::object FieldOf(const std::optional<std::string>& text) {
  return text ? ToPython(*text) : py::none();
}
py::object FieldOf(const std::vector<std::string>& texts) {
  py::tuple tuple(texts.size());
  for (std::size_t i = 0; i < texts.size(); ++i) tuple[i] = ToPython(texts[i]);
  return py::object(std::move(tuple));
}

template <class Field>
py::object CellOf(const Field& field) {
  if constexpr (std::is_same_v<Field, PowerState>) {
    return All().powerTexts.at(static_cast<std::size_t>(field));
  } else {
    return FieldOf(field);
  }
}

template <class Object>
py::object ObjectOf(const Object& object) {
  return std::apply([&](const auto&... field) { return ClassOf(object)(FieldOf(field)...); },
                    FieldsOf(object));
}

py::object TimeOf(std::chrono::system_clock::time_point time) {
  if (time.time_since_epoch().count() == 0) return py::none();
  const std::chrono::duration<double> seconds = time.time_since_epoch();
  return All().datetime.attr("fromtimestamp")(seconds.count(), All().utc);
}

}  // namespace

py::object ToPython(const std::string& text) {
  PyObject* made =
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace");
  if (made == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(made);
}

py::object ToPython(const AnyObject& object) {
  return std::visit(
      [](const auto& one) -> py::object {
        if constexpr (std::is_same_v<decltype(one), const std::monostate&>) {
          return py::none();
        } else {
          return ObjectOf(one);
        }
      },
      object);
}

py::object ToPython(const FullChange& full) {
  const Change& change = full.change;
  return All().change(All().changeTypes.at(static_cast<std::size_t>(change.type)),
                      All().kinds.at(static_cast<std::size_t>(change.kind)), ToPython(change.key),
                      ToPython(full.object));
}

py::object ToPython(const Status& status) {
  return All().status(All().states.at(static_cast<std::size_t>(status.state)),
                      ToPython(status.reason), TimeOf(status.since), status.connections,
                      status.hasAuthorization, ToPython(status.authorizationFailure),
                      status.updates, TimeOf(status.lastUpdate), ToPython(status.version),
                      status.failures, ToPython(status.lastFailure),
                      TimeOf(status.lastFailureTime));
}

template <class Object>
py::list ToList(const std::vector<Object>& objects) {
  py::list list(objects.size());
  for (std::size_t i = 0; i < objects.size(); ++i) list[i] = ObjectOf(objects[i]);
  return list;
}

template <class Object>
py::list ToColumns(const std::vector<Object>& objects, const std::vector<std::size_t>& fields) {
  constexpr std::size_t kFields = std::tuple_size_v<decltype(FieldsOf(Object()))>;
  std::array<std::optional<py::list>, kFields> columns;
  for (const std::size_t field : fields) columns.at(field) = py::list(objects.size());
  for (std::size_t row = 0; row < objects.size(); ++row) {
    std::size_t field = 0;
    const auto put = [&](const auto& value) {
      if (auto& column = columns[field++]) (*column)[row] = CellOf(value);
    };
    std::apply([&](const auto&... value) { (put(value), ...); }, FieldsOf(objects[row]));
  }
  py::list chosen;
  for (const std::size_t field : fields) chosen.append(*columns[field]);
  return chosen;
}

#define KECPP_INSTANTIATE(Object)                       \
  template py::list ToList(const std::vector<Object>&); \
  template py::list ToColumns(const std::vector<Object>&, const std::vector<std::size_t>&)

KECPP_INSTANTIATE(Host);
KECPP_INSTANTIATE(Machine);
KECPP_INSTANTIATE(Role);
KECPP_INSTANTIATE(Privilege);
KECPP_INSTANTIATE(Identity);

void TranslateErrors() {
  py::register_local_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(std::move(thrown));
    } catch (const Error& error) {
      const py::object& type = All().error;
      const py::object raised = type(ToPython(error.Url()), ToPython(error.Reason()));
      PyErr_SetObject(type.ptr(), raised.ptr());
    }
  });
}

}  // namespace kecpp::python
