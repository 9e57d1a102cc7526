// SPDX-License-Identifier: MIT
//
// Runs the files of cases/: what watches and update sets make of the caches. A file is a sequence
// of sections, each headed by a line "== NAME [ARGUMENT]"; text before the first one says what it
// is for.
//   watch FILTER    a property list; the server names its filter FILTER
//   set             the update set that arrives next; "returnval" and a version are put around
//                   filter sets that stand alone
//   again           the last set arrives once more
//   answer METHOD   the answer of a property method arrives
//   cache           what the caches hold now (CacheDump.h)
//   log, error      lines logged, and the exception thrown, by the last arrival; without such a
//                   section there must be none
//   signalled       the filters whose waiters were signalled so far, in order
// Every case runs in several writing styles: to the caches they are all the same.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "datasync/CacheDump.h"
#include "datasync/DataSyncConstants.h"
#include "datasync/FakeServer.h"
#include "datasync/KEDataSyncImpl.h"
#include "datasync/PropertyTexts.h"
#include "foundation/KEException.h"
#include "support/CapturedLog.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {
namespace {

namespace fs = std::filesystem;

struct Section {
  std::string name, argument, text;
};

std::vector<Section> ReadCase(const fs::path& file) {
  std::ifstream in(file);
  std::vector<Section> sections;
  for (std::string line; std::getline(in, line);) {
    if (line.compare(0, 3, "== ") == 0) {
      std::istringstream words(line.substr(3));
      sections.emplace_back();
      words >> sections.back().name >> sections.back().argument;
    } else if (!sections.empty() && !line.empty()) {
      sections.back().text += line + "\n";
    }
  }
  return sections;
}

// A writing style of the server: everything that matches between tags is replaced.
struct Style {
  const char* name;
  const char* pattern;
  const char* replacement;
};

const Style kStyles[] = {
    {"as it stands", "(?!)", ""},
    {"on one line", ">\n *", ">"},
    {"with foreign line ends", "\n", "\r\n"},
    {"with comments", ">\n", ">\n<!-- <filterSet><val>none</val> -->\n"},
    {"with blanks in the tags", "([a-zA-Z\"])(/?)>\n", "$1 $2>\n"},
    {"with single quotes", "\"", "'"},
};

class Waiter : public KELib::KEWaiter {
 public:
  Waiter(std::string filter, std::string& all) : name(std::move(filter)), signalled(all) {}
  bool Wait(int) override { return true; }
  void Signal() override { signalled += name + "\n"; }

 private:
  std::string name;
  std::string& signalled;
};

class CaseRun {
 public:
  CaseRun(const Style& writing, const std::string& where)
      : style(writing), trace(__FILE__, 0, where) {
    collector.type = "PropertyCollector";
    collector.value = "collector";
    root.type = "Folder";
    root.value = "root";
    sync.Init(&server, &collector);
  }

  void Take(const Section& section) {
    if (section.name == "watch") {
      Watch(section);
    } else if (section.name == "set") {
      set = section.text.compare(0, 10, "<filterSet") == 0
                ? "<returnval>\n<version>1</version>\n" + section.text + "</returnval>\n"
                : section.text;
      Arrive(set, "");
    } else if (section.name == "again") {
      Arrive(set, "");
    } else if (section.name == "answer") {
      Arrive(section.text, section.argument);
    } else {
      Expect(section);
    }
  }

  void ExpectNoMore() {
    EXPECT_EQ(error, "");
    EXPECT_EQ(log, "");
  }

 private:
  void Watch(const Section& section) {
    server.Then(MethodCreateFilter,
                FakeServer::Text("<returnval type=\"PropertyFilter\">" + section.argument +
                                 "</returnval>"));
    PropertyTexts list(section.text);
    waiters.push_back(std::make_unique<Waiter>(section.argument, signalled));
    sync.CreatePropFilter(&root, list, waiters.back().get());
  }

  void Arrive(const std::string& text, const std::string& method) {
    ExpectNoMore();
    CapturedLog::Clear();
    error.clear();
    KELib::KEString styled(
        std::regex_replace(text, std::regex(style.pattern), style.replacement).c_str());
    KELib::Xml::KEXmlReader reader(styled, false, 0);
    try {
      if (method.empty()) {
        UpdateInfo ui(Val, nullptr);
        sync.UpdateSetToCache(ui, reader);
        EXPECT_EQ(ui.syncInfo, nullptr);
      } else {
        UpdateInfo ui(ReturnVal, ReturnVal);
        ui.name = method.c_str();
        sync.UpdateComplexType(ui, reader);
      }
    } catch (const KELib::Exception& e) {
      error = std::string(e.What()) + "\n";
    }
    log.clear();
    for (const CapturedLog::Line& line : CapturedLog::Lines()) log += line.text + "\n";
  }

  void Expect(const Section& section) {
    if (section.name == "cache") {
      EXPECT_EQ(DumpCaches(*sync.GetCache()), section.text);
    } else if (section.name == "signalled") {
      EXPECT_EQ(signalled, section.text);
    } else if (section.name == "error") {
      EXPECT_EQ(error, section.text);
      error.clear();
    } else {
      ASSERT_EQ(section.name, "log");
      // A line that ends in a line feed of its own leaves an empty one.
      EXPECT_EQ(std::regex_replace(log, std::regex("\n\n"), "\n"), section.text);
      log.clear();
    }
  }

  const Style& style;
  testing::ScopedTrace trace;
  FakeServer server;
  Stub::ManagedObjectReference collector, root;
  std::string signalled, set, error, log;
  std::vector<std::unique_ptr<Waiter>> waiters;
  KEDataSyncImpl sync;
};

class UpdateSetCaseTest : public testing::TestWithParam<fs::path> {};

TEST_P(UpdateSetCaseTest, EndsAsWritten) {
  const std::vector<Section> sections = ReadCase(GetParam());
  ASSERT_FALSE(sections.empty());
  for (const Style& style : kStyles) {
    CaseRun run(style, style.name);
    for (const Section& section : sections) run.Take(section);
    run.ExpectNoMore();
  }
}

std::vector<fs::path> CaseFiles() {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(KECPP_TEST_DATA "/cases")) {
    if (entry.path().extension() == ".case") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string NameOf(const testing::TestParamInfo<fs::path>& info) {
  return std::regex_replace(info.param.stem().string(), std::regex("-"), "_");
}

INSTANTIATE_TEST_SUITE_P(Cases, UpdateSetCaseTest, testing::ValuesIn(CaseFiles()), NameOf);

}  // namespace
}  // namespace KE::Service
