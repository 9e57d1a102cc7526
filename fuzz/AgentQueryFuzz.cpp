// SPDX-License-Identifier: MIT
//
// Any text as a query in each language. Nothing crashes; a condition and its opposite are never
// both true, nor both false; and where a key is said to be required, no other passes.
#include <kecpp/inventory.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tools/agent/Errors.h"
#include "tools/agent/query/Condition.h"

namespace {

using namespace tools;
using namespace tools::agent::query;

// A machine.
class Machine final : public Record {
 public:
  bool Read(const ClassProperty& property, std::string& out) const override {
    return property.row->read(&view, out);
  }
  std::string_view Key() const { return view.key; }

 private:
  const kecpp::MachineView view{"vm-1",      "name",
                                "",          "uuid",
                                "guest",     "host.example",
                                "10.0.0.1",  "path",
                                "poweredOn", kecpp::PowerState::on,
                                2,           {}};
};

void Check(const Expression& condition, const std::string& alias) {
  const ClassRow& type = ClassOf(kecpp::Kind::machine);
  const Machine machine;
  Expression opposite;
  opposite.kind = Expression::Kind::Not;
  opposite.parts.push_back(condition);
  const bool holds = Condition(condition, type, alias).Holds(machine);
  if (holds == Condition(opposite, type, alias).Holds(machine)) std::abort();
  const auto key = RequiredKey(condition, type, alias);
  if (holds && key && *key != machine.Key()) std::abort();
}

// What is not understood is refused, by this error alone.
template <class Try>
void Guarded(Try attempt) {
  try {
    attempt();
  } catch (const agent::OperationError& error) {
    if (error.status != agent::Status::InvalidQuery) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  for (const Language language : {Language::wql, Language::cql}) {
    Guarded([&] {
      const Query query = ParseQuery(language, text);
      if (query.where) Check(*query.where, query.alias);
    });
  }
  Guarded([&] { Check(ParseCondition(text), ""); });
  return 0;
}
