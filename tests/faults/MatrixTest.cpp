// SPDX-License-Identifier: MIT
//
// Every call times every fault, as docs/failures.md says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iostream>

#include "faults/Lives.h"
#include "faults/Stage.h"
#include "faults/Tables.h"
#include "support/CapturedLog.h"

namespace faults {
namespace {

const char END[] = "the process ends";

struct Cell {
  Row scene;  // of scenes.txt: the call, its method, what comes before, the step, the next attempt
  Entry fault, outcome;

  bool EndsTheProcess() const {
    return outcome.at("You see") == END || outcome.at("Next attempt") == END;
  }
};

const std::vector<Entry>& Table(const char* title) {
  static auto& tables = *new std::map<std::string, std::vector<Entry>>;
  auto& entries = tables[title];
  if (entries.empty()) entries = ReadTable(KECPP_FAILURES, title);
  return entries;
}

template <typename Rows, typename Wanted>
const auto& Find(const Rows& rows, Wanted wanted) {
  const auto found = std::find_if(rows.begin(), rows.end(), wanted);
  if (found == rows.end()) throw std::runtime_error("a row is missing");
  return *found;
}

// What is expected of a call that meets each fault.
std::vector<Cell> CellsOf(const std::string& call) {
  static const auto& scenes = *new std::vector<Row>(ReadRows(KECPP_SCENES));
  const Row& scene = Find(scenes, [&](const Row& row) { return row[0] == call; });
  std::vector<Cell> cells;
  for (const Entry& met : Table("Met by")) {
    const auto isFault = [&](const Entry& row) { return row.at("Fault") == met.at("Met by"); };
    const auto isOutcome = [&](const Entry& row) {
      return row.at("Call") == call && row.at("Outcome") == met.at(call);
    };
    cells.push_back({scene, Find(Table("Fault"), isFault), Find(Table("Call"), isOutcome)});
  }
  return cells;
}

// --- patterns ------------------------------------------------------------------------------------

// The alternatives of a pattern that speaks of the failure's text.
Row Alternatives(const std::string& pattern, const Entry& fault) {
  const std::size_t at = pattern.find("TEXT");
  if (at == std::string::npos) return {pattern};
  Row texts = Parts(fault.at("TEXT"), " or ");
  if (texts.empty()) texts = {""};
  for (std::string& text : texts) text = std::string(pattern).replace(at, 4, text);
  return texts;
}

std::string OneLine(const std::string& text) {
  return text.substr(0, text.find_last_not_of(" \n") + 1);
}

bool MatchesAny(const std::string& text, const std::string& pattern, const Entry& fault) {
  const Row all = Alternatives(pattern, fault);
  return std::any_of(all.begin(), all.end(), [&](const std::string& alternative) {
    return Matches(text, OneLine(alternative));
  });
}

// --- checks --------------------------------------------------------------------------------------

// Does steps and awaits statements. What does not go as it should comes back, or nothing.
std::string Perform(Stage& stage, const std::string& script, const Entry& fault) {
  for (const std::string& part : Parts(script, ";")) {
    const bool works = stage.IsStep(part) ? stage.Do(part) == "returns" : Eventually([&] {
      return stage.Holds(part, Alternatives("TEXT", fault));
    });
    if (!works) return part;
  }
  return {};
}

void CheckSecrets(const Stage& stage) {
  for (const std::string& secret : stage.Secrets()) {
    ASSERT_FALSE(secret.empty());
    EXPECT_EQ(CapturedLog::Count(secret), 0u) << "a secret is told: " << secret;
  }
}

struct Expected {
  std::string pattern;
  int least, most;
};

// A line comes once. "each": for each failed cycle; "maybe": or not; "maybe each": or for each.
std::vector<Expected> ExpectedLines(const Cell& cell, const Stage::Attempts& attempts) {
  std::vector<Expected> lines;
  for (const std::string& entry : Parts(cell.outcome.at("Log"), "<br>")) {
    const bool maybe = entry.compare(0, 5, "maybe") == 0;
    const bool each = entry.compare(maybe ? 6 : 0, 4, "each") == 0;
    const std::size_t prefix = maybe || each ? entry.find(": ") + 2 : 0;
    lines.push_back({entry.substr(prefix), maybe ? 0 : 1, each ? attempts.cycles : 1});
  }
  for (const std::string& entry : Parts(cell.fault.at("Also in the log"), "<br>")) {
    lines.push_back({entry, 1, attempts.calls});
  }
  return lines;
}

void CheckLog(const Cell& cell, const Stage::Attempts& attempts) {
  Row lines;
  for (const CapturedLog::Line& line : CapturedLog::Lines()) {
    lines.push_back(OneLine(line.text));
    EXPECT_LT(lines.back().size(), 600u) << lines.back().substr(0, 600);
    EXPECT_EQ(lines.back().find('\n'), std::string::npos) << lines.back();
  }
  for (const Expected& expected : ExpectedLines(cell, attempts)) {
    int count = 0;
    for (std::string& line : lines) {
      if (line.empty() || !MatchesAny(line, expected.pattern, cell.fault)) continue;
      ++count;
      line.clear();
    }
    EXPECT_GE(count, expected.least) << expected.pattern;
    EXPECT_LE(count, expected.most) << expected.pattern;
  }
  for (const std::string& line : lines) EXPECT_EQ(line, "") << "not expected in the log";
}

void Meet(const Cell& cell, bool hasPassword) {
  static const auto& next =
      *new Entry{{"works", ""},
                 {"works after a new login", "log out; log in; watch systems"},
                 {"works with a new instance", "enter; watch systems"}};
  SCOPED_TRACE(cell.scene[0] + " met by " + cell.fault.at("Fault"));
  CapturedLog::Clear();
  Stage stage(cell.fault.at("Fault"), hasPassword);
  EXPECT_EQ(Perform(stage, cell.scene[2], cell.fault), "");
  CheckSecrets(stage);
  CapturedLog::Clear();
  stage.BeginFault(cell.scene[1]);
  const std::string seen = stage.Do(cell.scene[3]);
  EXPECT_TRUE(MatchesAny(OneLine(seen), cell.outcome.at("You see"), cell.fault)) << seen;
  EXPECT_EQ(Perform(stage, cell.outcome.at("Afterwards"), cell.fault), "");
  CheckLog(cell, stage.EndFault());
  EXPECT_EQ(Perform(stage, next.at(cell.outcome.at("Next attempt")), cell.fault), "");
  EXPECT_EQ(Perform(stage, cell.scene[4], cell.fault), "");
  CheckSecrets(stage);
}

// --- the end of the process ----------------------------------------------------------------------

const Cell* ending = nullptr;
Stage* doomed = nullptr;
pthread_t user;
std::atomic<bool> parked{false};  // the user's thread does nothing any more

bool HasLines(const std::string& log, const Cell& cell) {
  const Row patterns = Parts(cell.outcome.at("Log"), "<br>");
  return std::all_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
    return MatchesAny(log, "*" + pattern + "*", cell.fault);
  });
}

// A user may free everything when the process ends, on whichever thread that is.
void FreeAtExit() {
  if (!pthread_equal(pthread_self(), user)) driver::Eventually([] { return parked.load(); });
  delete doomed;
  std::string log;
  for (const CapturedLog::Line& line : CapturedLog::Lines()) log += line.text + '\n';
  if (HasLines(log, *ending)) return;
  std::cerr << "the log lacks what the document says: " << log;
  _exit(EXIT_FAILURE);
}

// Ends with the process.
[[noreturn]] void Live(const Cell& cell) {
  alarm(100);
  user = pthread_self();
  ending = &cell;
  doomed = new Stage(cell.fault.at("Fault"), false);
  Perform(*doomed, cell.scene[2], cell.fault);
  CapturedLog::Clear();
  doomed->BeginFault(cell.scene[1]);
  // Runs before the HTTP client that controls the daemon loses its statics.
  std::atexit(FreeAtExit);
  doomed->Do(cell.scene[3]);
  if (cell.outcome.at("You see") != END) {
    doomed->EndFault();
    for (const char* step : {"log out", "log in", "watch systems"}) doomed->Do(step);
  }
  parked = true;
  for (;;) pause();
}

// --- the matrix ----------------------------------------------------------------------------------

void MeetAll(const std::string& call, bool hasPassword) {
  std::vector<Life> lives;
  for (const Cell& cell : CellsOf(call)) {
    lives.push_back({cell.fault.at("Fault"), cell.EndsTheProcess(), [cell, hasPassword] {
                       cell.EndsTheProcess() ? Live(cell) : Meet(cell, hasPassword);
                     }});
  }
  LiveAll(lives);
}

class Matrix : public testing::TestWithParam<std::string> {};

TEST_P(Matrix, IsAsTheDocumentSays) {
  MeetAll(GetParam(), false);
}

TEST(Password, MeetsTheSame) {
  for (const char* call : {"Login", "Logout"}) {
    SCOPED_TRACE(call);
    MeetAll(call, true);
  }
}

Row Calls() {
  Row calls;
  for (const auto& column : Table("Met by").front()) {
    if (column.first != "Met by") calls.push_back(column.first);
  }
  return calls;
}

INSTANTIATE_TEST_SUITE_P(Call, Matrix, testing::ValuesIn(Calls()), [](const auto& made) {
  std::string name = made.param;
  name.erase(std::remove_if(name.begin(), name.end(), [](char c) { return !std::isalpha(c); }),
             name.end());
  return name;
});

}  // namespace
}  // namespace faults
