// SPDX-License-Identifier: MIT
//
// Any text as the target of a request for a list, or for an object. Nothing crashes, and what is
// not understood is refused as such; pages have no more than they may, and the cursor of one leads
// to the rows behind it.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tools/agent/api/ApiPath.h"
#include "tools/agent/api/ListQuery.h"
#include "tools/agent/api/Problem.h"

namespace {

using namespace tools::agent::api;

Parameters::Map ParametersOf(std::string_view text) {
  Parameters::Map parameters;
  while (!text.empty()) {
    const std::string_view one = text.substr(0, text.find('&'));
    text.remove_prefix(std::min(text.size(), one.size() + 1));
    const std::size_t equals = std::min(one.find('='), one.size());
    parameters.emplace(one.substr(0, equals), one.substr(std::min(equals + 1, one.size())));
  }
  return parameters;
}

Catalogue CatalogueOf() {
  Catalogue made;
  kecpp::Machine machine;
  for (const char* key : {"vm-1", "vm-2", "vm-10", "VM-2", "\xff", ""}) {
    machine.name = std::string(key) + "name";
    machine.powerState = key[0] == 'v' ? kecpp::PowerState::on : kecpp::PowerState::off;
    made.Put(key, RowOf(machine));
  }
  return made;
}

// Rows follow each other in the order that was asked for.
void Check(const Page& page, const ListQuery& query) {
  if (page.entries.size() > query.limit) std::abort();
  for (std::size_t i = 1; i < page.entries.size(); ++i) {
    const int order = SortKeyOf(*page.entries[i - 1], *query.sort)
                          .compare(SortKeyOf(*page.entries[i], *query.sort));
    if (query.descends ? order <= 0 : order >= 0) std::abort();
  }
}

void CheckList(const KindInfo& kind, Parameters::Map parameters) {
  static auto* const catalogue = new Catalogue(CatalogueOf());
  const auto read = [&] {
    return ReadListQuery(kind, Parameters(parameters, {"text", "sort", "limit", "cursor", "offset",
                                                       "power", "status", "host"}));
  };
  const ListQuery query = read();
  catalogue->Sort(*query.sort);
  const auto& order = *catalogue->OrderBy(*query.sort);
  const Page page = Select(order, query);
  Check(page, query);
  if (page.next.empty()) return;
  parameters.erase("cursor");
  parameters.erase("offset");
  parameters.emplace("cursor", page.next);
  Page both = Select(order, read());
  if (both.entries.empty() || both.total != page.total) std::abort();
  both.entries.insert(both.entries.begin(), page.entries.back());
  both.entries.resize(2);
  ListQuery two = query;
  two.limit = 2;
  Check(both, two);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string target(reinterpret_cast<const char*>(data), size);
  try {
    const ApiPath path = ReadPath(target);
    const std::size_t question = std::min(target.find('?'), target.size() - 1);
    const KindInfo* kind = FindPlural(path.name);
    if (kind && !path.key) CheckList(*kind, ParametersOf(target.substr(question + 1)));
  } catch (const Problem& problem) {
    if (problem.status != 400 && problem.status != 404) std::abort();
  }
  return 0;
}
