// SPDX-License-Identifier: MIT
#include "tools/agent/PullOperations.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "tools/agent/ClassElements.h"
#include "tools/agent/QueryOperations.h"
#include "tools/agent/query/Query.h"

namespace tools::agent {
namespace {

constexpr unsigned STANDARD_TIMEOUT = 60;
constexpr unsigned MOST_TIMEOUT = 600;                // seconds
constexpr std::size_t MOST_BYTES = PORTION_ROOM / 2;  // of a portion, before no object is added

// Nothing when the parameter is absent or null.
std::optional<unsigned> Number(const Request& request, const char* parameter) {
  const std::string text = request.Text(parameter);
  if (text.empty()) return {};
  unsigned number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec == std::errc() && result.ptr == text.data() + text.size()) return number;
  throw OperationError(Status::InvalidParameter, std::string(parameter) + " is no number");
}

std::chrono::seconds Timeout(const Request& request) {
  const unsigned seconds = Number(request, "OperationTimeout").value_or(STANDARD_TIMEOUT);
  if (seconds > 0 && seconds <= MOST_TIMEOUT) return std::chrono::seconds(seconds);
  throw OperationError(Status::InvalidOperationTimeout, "timeouts are 1 to 600 seconds");
}

std::optional<query::Expression> ReadFilter(const Request& request) {
  const std::string language = request.Text("FilterQueryLanguage");
  const std::string text = request.Text("FilterQuery");
  if (language.empty() != text.empty()) {
    throw OperationError(Status::InvalidParameter,
                         "FilterQuery and FilterQueryLanguage come together");
  }
  if (language.empty()) return {};
  if (query::FindLanguage(language) == query::Language::fql) return query::ParseCondition(text);
  throw OperationError(Status::QueryLanguageNotSupported,
                       "filters in " + language + " are not read");
}

// With the name that the operations without portions have for this parameter.
Request Renamed(Request request, const char* from, const char* to) {
  for (Parameter& parameter : request.parameters) {
    if (SameName(parameter.name, from)) parameter.name = to;
  }
  return request;
}

Call With(const Call& call, const Request& request) {
  return {request, call.gate, call.stored, call.host, call.client, call.turns, call.pulls};
}

// Writes up to so many objects; `inventory` is null for a cursor that reads none.
void WritePortion(Cursor& cursor, const kecpp::Inventory* inventory, std::size_t most,
                  XmlWriter& out) {
  while (most > 0 && !cursor.AtEnd() && out.Written().size() < MOST_BYTES) {
    most -= cursor.Write(inventory, std::min(most, MOST_AT_ONCE), out);
  }
}

// A portion, and what tells the client how to go on: a context, or none at the end. `result` writes
// further parameters.
template <class Result>
Content Answer(XmlWriter portion, const std::string& context, Result result) {
  return Content::OfResponse([text = portion.Take(), context, result](XmlWriter& out) {
    out.Open("IRETURNVALUE");
    out.Encoded(text);
    out.Close("IRETURNVALUE");
    const auto parameter = [&](const char* name, const char* type, const std::string& value) {
      out.Open("PARAMVALUE", {{"NAME", name}, {"PARAMTYPE", type}});
      out.Open("VALUE");
      out.Text(value);
      out.Close("VALUE");
      out.Close("PARAMVALUE");
    };
    parameter("EnumerationContext", "string", context);
    parameter("EndOfSequence", "boolean", context.empty() ? "TRUE" : "FALSE");
    result(out);
  });
}

void NoResult(XmlWriter&) {}

template <class Result>
Content Open(const Call& call, PullKind kind, Content selected, Result result) {
  const Request& request = call.request;
  const std::size_t most = Number(request, "MaxObjectCount").value_or(0);
  const std::chrono::seconds timeout = Timeout(request);
  if (request.Flag("ContinueOnError", false)) {
    throw OperationError(Status::ContinuationOnErrorNotSupported,
                         "an enumeration ends with its first error");
  }
  const auto visit = selected.Visit();
  PullSessions::Session session{kind,    request.space->space, call.client, visit.has_value(),
                                timeout, selected.TakeCursor()};
  XmlWriter portion;
  {
    const Turns::Turn turn(call.turns);
    WritePortion(*session.cursor, visit ? &visit->Inventory() : nullptr, most, portion);
  }
  if (visit) visit->Confirm();
  const bool isWhole = session.cursor->AtEnd();
  const std::string context = isWhole ? "" : call.pulls.Open(std::move(session));
  return Answer(std::move(portion), context, result);
}

}  // namespace

Content OpenSelected(const Call& call, PullKind kind, Select ofInventory, Select ofStored) {
  const Request request = Renamed(call.request, "InstanceName", "ObjectName");
  const auto condition = ReadFilter(request);
  const Shape shape = kind == PullKind::Paths ? Shape::Path : Shape::WithPath;
  const Select select = request.space->space == INTEROP ? ofStored : ofInventory;
  return Open(call, kind, select(With(call, request), shape, condition ? &*condition : nullptr),
              NoResult);
}

Content OpenQuery(const Call& call) {
  const Request& request = call.request;
  const Asked asked = ReadQuery(request, "FilterQueryLanguage", "FilterQuery");
  const auto select = request.space->space == INTEROP ? SelectStoredByQuery : SelectByQuery;
  const bool wantsClass = request.Flag("ReturnQueryResultClass", false);
  return Open(call, PullKind::Instances, select(call, asked, Shape::Instance),
              [wantsClass, type = asked.type,
               properties = Selected(asked.query, *asked.type)](XmlWriter& out) {
                if (!wantsClass) return;
                out.Open("PARAMVALUE", {{"NAME", "QueryResultClass"}});
                WriteClass(out, *type, properties, {false, false, false});
                out.Close("PARAMVALUE");
              });
}

Content Pull(const Call& call, PullKind kind) {
  const Request& request = call.request;
  const auto most = Number(request, "MaxObjectCount");
  if (!most) throw OperationError(Status::InvalidParameter, "MaxObjectCount is missing");
  auto taken =
      call.pulls.Take(request.Text("EnumerationContext"), request.space->space, call.client, kind);
  // Given back whatever happens: a daemon that is away for a moment ends no enumeration.
  struct Back {
    PullSessions& pulls;
    PullSessions::Taken& taken;
    ~Back() {
      if (taken) pulls.Return(std::move(taken));
    }
  } const back{call.pulls, taken};
  PullSessions::Session& session = taken.mapped().session;
  XmlWriter portion;
  if (session.readsInventory) {
    const auto visit = call.gate.Enter();
    const Turns::Turn turn(call.turns);
    WritePortion(*session.cursor, &visit.Inventory(), *most, portion);
  } else {
    WritePortion(*session.cursor, nullptr, *most, portion);
  }
  if (!session.cursor->AtEnd()) return Answer(std::move(portion), taken.key(), NoResult);
  taken = {};
  return Answer(std::move(portion), "", NoResult);
}

Content CloseEnumeration(const Call& call) {
  call.pulls.Take(call.request.Text("EnumerationContext"), call.request.space->space, call.client);
  return Content::OfResponse([](XmlWriter&) {});
}

}  // namespace tools::agent
