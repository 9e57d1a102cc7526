// SPDX-License-Identifier: MIT
//
// Every call times every fault, as docs/failures.md says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <iostream>

#include "faults/Scenes.h"
#include "faults/Tables.h"
#include "support/CapturedLog.h"

namespace faults {
namespace {

const char kEnd[] = "the process ends";

struct Cell {
  const Scene& scene;
  Row fault, outcome;

  bool EndsTheProcess() const {
    return outcome.at("You see") == kEnd || outcome.at("Next attempt") == kEnd;
  }
};

const std::vector<Row>& Table(const std::string& title) {
  static auto& tables = *new std::map<std::string, std::vector<Row>>;
  auto& rows = tables[title];
  if (rows.empty()) rows = ReadTable(KECPP_FAILURES, title);
  return rows;
}

// What is expected of a call that meets a fault.
Cell FindCell(const std::string& call, const Row& matrixRow) {
  const auto found = [](const std::string& title, const auto& wanted) {
    for (const Row& row : Table(title)) {
      if (wanted(row)) return row;
    }
    throw std::runtime_error("no row in the table " + title);
  };
  const std::string& kind = matrixRow.at("Met by");
  const std::string& outcome = matrixRow.at(call);
  return {FindScene(call), found("Fault", [&](const Row& row) { return row.at("Fault") == kind; }),
          found("Call", [&](const Row& row) {
            return row.at("Call") == call && row.at("Outcome") == outcome;
          })};
}

// --- patterns ------------------------------------------------------------------------------------

// The alternatives of a pattern that speaks of the failure's text.
std::vector<std::string> Alternatives(const std::string& pattern, const Row& fault) {
  const std::size_t at = pattern.find("TEXT");
  if (at == std::string::npos) return {pattern};
  std::vector<std::string> all;
  for (const std::string& text : Split(fault.at("TEXT") + " ", " or ")) {
    all.push_back(std::string(pattern).replace(at, 4, text));
  }
  if (all.empty()) all.push_back(std::string(pattern).replace(at, 4, ""));
  return all;
}

std::string OneLine(std::string text) {
  while (!text.empty() && text.find_last_of(" \n") == text.size() - 1) text.pop_back();
  return text;
}

bool MatchesAny(const std::string& text, const std::string& pattern, const Row& fault) {
  for (const std::string& alternative : Alternatives(pattern, fault)) {
    if (Matches(text, OneLine(alternative))) return true;
  }
  return false;
}

// --- checks --------------------------------------------------------------------------------------

void CheckReadable(const std::string& line) {
  EXPECT_LT(line.size(), 600u) << line.substr(0, 600);
  EXPECT_EQ(line.find('\n'), std::string::npos) << line;
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

// A line comes once. "each": for each failed cycle; "maybe": or not.
std::vector<Expected> ExpectedLines(const Cell& cell, const Stage::Attempts& attempts) {
  std::vector<Expected> lines;
  for (const std::string& entry : Split(cell.outcome.at("Log"), "<br>")) {
    if (entry.compare(0, 6, "each: ") == 0) {
      lines.push_back({entry.substr(6), 1, attempts.cycles});
    } else if (entry.compare(0, 7, "maybe: ") == 0) {
      lines.push_back({entry.substr(7), 0, 1});
    } else {
      lines.push_back({entry, 1, 1});
    }
  }
  for (const std::string& entry : Split(cell.fault.at("Also in the log"), "<br>")) {
    lines.push_back({entry, 1, attempts.calls});
  }
  return lines;
}

void CheckLog(const Cell& cell, const Stage::Attempts& attempts) {
  std::vector<std::string> lines;
  for (const CapturedLog::Line& line : CapturedLog::Lines()) lines.push_back(OneLine(line.text));
  for (const std::string& line : lines) CheckReadable(line);
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

void CheckState(Stage& stage, const Cell& cell) {
  for (const std::string& statement : Split(cell.outcome.at("Afterwards"), ";")) {
    EXPECT_TRUE(endtoend::Eventually([&] {
      return stage.Holds(statement, Alternatives("TEXT", cell.fault));
    })) << statement;
  }
}

void CheckNextAttempt(Stage& stage, const Cell& cell) {
  const std::string& next = cell.outcome.at("Next attempt");
  if (next == "works after a new login") {
    stage.LogOut();
    EXPECT_EQ(stage.LogIn(), "returns");
    EXPECT_EQ(stage.WatchSystems(), "returns");
  } else if (next == "works with a new instance") {
    EXPECT_EQ(stage.Enter(), "returns");
    EXPECT_EQ(stage.WatchSystems(), "returns");
  } else {
    ASSERT_EQ(next, "works");
  }
  EXPECT_TRUE(cell.scene.again(stage)) << next;
}

void Meet(const Cell& cell, Stage::Credentials credentials) {
  CapturedLog::Clear();
  Stage stage(cell.fault.at("Fault"), credentials);
  cell.scene.prepare(stage);
  CheckSecrets(stage);
  CapturedLog::Clear();
  stage.BeginFault(cell.scene.method);
  const std::string seen = cell.scene.act(stage);
  EXPECT_TRUE(MatchesAny(OneLine(seen), cell.outcome.at("You see"), cell.fault)) << seen;
  CheckState(stage, cell);
  CheckLog(cell, stage.EndFault());
  CheckNextAttempt(stage, cell);
  CheckSecrets(stage);
}

// --- the matrix ----------------------------------------------------------------------------------

class Matrix : public testing::TestWithParam<std::string> {};

TEST_P(Matrix, IsAsTheDocumentSays) {
  for (const Row& row : Table("Met by")) {
    const Cell cell = FindCell(GetParam(), row);
    SCOPED_TRACE(GetParam() + " met by " + cell.fault.at("Fault"));
    if (!cell.EndsTheProcess()) Meet(cell, Stage::Credentials::Ticket);
  }
}

TEST_P(Matrix, IsTheSameForAUserWithAPassword) {
  if (GetParam() != "Login" && GetParam() != "Logout") return;
  for (const Row& row : Table("Met by")) {
    const Cell cell = FindCell(GetParam(), row);
    SCOPED_TRACE(GetParam() + " met by " + cell.fault.at("Fault"));
    Meet(cell, Stage::Credentials::Password);
  }
}

Stage* doomed = nullptr;
pthread_t user;
std::atomic<bool> parked{false};  // the user's thread does nothing any more

// A user may free everything when the process ends, on whichever thread that is.
void FreeAtExit() {
  if (!pthread_equal(pthread_self(), user)) endtoend::Eventually([] { return parked.load(); });
  delete doomed;
  for (const CapturedLog::Line& line : CapturedLog::Lines()) std::cerr << line.text << '\n';
}

// Runs in the child.
[[noreturn]] void Live(const Cell& cell) {
  alarm(100);
  user = pthread_self();
  doomed = new Stage(cell.fault.at("Fault"), Stage::Credentials::Ticket);
  cell.scene.prepare(*doomed);
  CapturedLog::Clear();
  doomed->BeginFault(cell.scene.method);
  std::atexit(
      FreeAtExit);  // runs before the HTTP client that controls the daemon loses its statics
  cell.scene.act(*doomed);
  if (cell.outcome.at("You see") != kEnd) {
    doomed->EndFault();
    doomed->LogOut();
    doomed->LogIn();
    doomed->WatchSystems();
  }
  parked = true;
  for (;;) pause();
}

bool HasLines(const std::string& errors, const Cell& cell) {
  for (const std::string& pattern : Split(cell.outcome.at("Log"), "<br>")) {
    if (!MatchesAny(errors, "*" + pattern + "*", cell.fault)) return false;
  }
  return true;
}

TEST_P(Matrix, SaysWhatEndsTheProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  for (const Row& row : Table("Met by")) {
    const Cell cell = FindCell(GetParam(), row);
    SCOPED_TRACE(GetParam() + " met by " + cell.fault.at("Fault"));
    if (!cell.EndsTheProcess()) continue;
    EXPECT_EXIT(Live(cell), testing::ExitedWithCode(0),
                testing::Truly([&](const std::string& errors) { return HasLines(errors, cell); }));
  }
}

std::vector<std::string> Calls() {
  std::vector<std::string> calls;
  for (const auto& [title, outcome] : Table("Met by").front()) {
    if (title != "Met by") calls.push_back(title);
  }
  return calls;
}

INSTANTIATE_TEST_SUITE_P(Call, Matrix, testing::ValuesIn(Calls()), [](const auto& made) {
  std::string name;
  for (char c : made.param) {
    if (std::isalpha(static_cast<unsigned char>(c))) name += c;
  }
  return name;
});

}  // namespace
}  // namespace faults
