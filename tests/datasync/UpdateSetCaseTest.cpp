// SPDX-License-Identifier: MIT
//
// Runs the files of cases/: what watches, update sets and failures make of a data sync. A file is a
// sequence of sections, each headed by a line "== NAME [ARGUMENT]"; text before the first one says
// what it is for. These do something:
//   watch FILTER    sets a watch up with this property list; the server names its filter FILTER
//   set             the update set that arrives next; "returnval" and a version are put around
//                   filter sets that stand alone
//   again           the last set arrives once more
//   throw KIND      the next wait ends with this exception and this text
//   answer METHOD   a property method gives this answer from now on; a wait times out
// and these tell what is then true:
//   cache           what the caches hold (CacheDump.h)
//   signalled       the filters whose waiters were signalled so far, in order
//   version         the version that the wait named which is now out
//   request         the body of the last "CreateFilter"
//   calls           what else was called since the last arrival
//   failures        the number of failed cycles in a row
//   log, error      what was logged since the last arrival or watch, and the exception of the
//   watch;
//                   without such a section there must be none
// Every case runs in several writing styles: to the caches they are all the same.
#include <filesystem>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "datasync/PropertyList.h"
#include "datasync/SyncFixture.h"

namespace KE::Service {
namespace {

namespace fs = std::filesystem;
using std::regex_replace;

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

const struct {
  const char *name, *pattern, *replacement;
} kStyles[] = {
    {"as it stands", "(?!)", ""},
    {"on one line", ">\n *", ">"},
    {"with foreign line ends", "\n", "\r\n"},
    {"with comments", ">\n", ">\n<!-- <filterSet><val>none</val> -->\n"},
    {"with blanks in the tags", "([a-zA-Z\"])(/?)>\n", "$1 $2>\n"},
    {"with single quotes", "\"", "'"},
};

FakeServer::Answer Failure(const std::string& kind, const std::string& text) {
  const auto fail = [&](auto error) {
    error.Init(text.c_str(), 0);
    return FakeServer::Throw(error);
  };
  if (kind == "Canceled") return fail(KE::RequestCanceledException());
  if (kind == "TimedOut") return fail(KELib::RequestTimedOutException());
  if (kind == "NoPermission") return fail(KELib::NoPermissionException());
  if (kind == "NotAuthenticated") return fail(KELib::NotAuthenticatedException());
  if (kind == "System") return fail(KELib::SystemException());
  if (kind == "foreign") return FakeServer::Throw(std::runtime_error(text));
  return FakeServer::Throw(7);
}

class NamedWaiter : public KELib::KEWaiter {
 public:
  NamedWaiter(std::string filter, std::string& all) : name(std::move(filter)), signalled(all) {}
  bool Wait(int) override { return true; }
  void Signal() override { signalled += name + "\n"; }

 private:
  std::string name;
  std::string& signalled;
};

class UpdateSetCaseTest : public SyncFixture, public testing::WithParamInterface<fs::path> {
 protected:
  void Run(const std::vector<Section>& sections) {
    signalled = error = log = "";
    timeoutFed = false;
    for (const Section& section : sections) {
      if (section.name == "watch") {
        ExpectNoMore();
        SetUpWatch(section);
      } else if (section.name == "set") {
        const bool bare = section.text.compare(0, 10, "<filterSet") == 0;
        const std::string intro = "<returnval>\n<version>1</version>\n";
        set = bare ? intro + section.text + "</returnval>\n" : section.text;
        Arrive(FakeServer::Text(Styled(set)));
      } else if (section.name == "again") {
        Arrive(FakeServer::Text(Styled(set)));
      } else if (section.name == "throw") {
        Arrive(Failure(section.argument, section.text.substr(0, section.text.size() - 1)));
      } else if (section.name == "answer") {
        server.Always(section.argument, FakeServer::Text(Styled(section.text)));
        Arrive(Failure("TimedOut", ""));
        log.clear();
      } else {
        Expect(section);
      }
    }
    ExpectNoMore();
    server.Always("RetrieveAllPermissions", nullptr);
    MakeSync();
  }

  std::string pattern, replacement;

 private:
  std::string Styled(const std::string& text) {
    return regex_replace(text, std::regex(pattern), replacement);
  }

  // The first cycle of the loop ends with a time-out, so that the first set is a section as well.
  void SetUpWatch(const Section& section) {
    server.Then("CreateFilter", FakeServer::Text(Styled("<returnval type=\"PropertyFilter\">" +
                                                        section.argument + "</returnval>")));
    if (!timeoutFed) server.FeedError(KELib::RequestTimedOutException("first cycle"));
    timeoutFed = true;
    CapturedLog::Clear();
    waiters.push_back(std::make_unique<NamedWaiter>(section.argument, signalled));
    error = TextOf([&] {
              PropertyTexts list(section.text);
              const RefPtr root = Reference("Folder", "root");
              if (PropertyList(list).IsTaskWatch()) {  // without waiting for the task
                sync->CreatePropFilter(root.get(), list, waiters.back().get());
                sync->StartSyncData();
              } else {
                sync->SetupDataSync(root.get(), list, waiters.back().get());
              }
              server.AwaitQuietWait();
              CapturedLog::Clear();
            }) +
            "\n";
    if (error == "no exception\n") error.clear();
    TakeLog();
  }

  void Arrive(const FakeServer::Answer& answer) {
    ExpectNoMore();
    CapturedLog::Clear();
    const std::size_t waits = server.Count("WaitForUpdates");
    callsBefore = server.Count("");
    server.Then("WaitForUpdates", answer);
    server.AwaitQuietWait(waits + 1);
    TakeLog();
  }

  void TakeLog() {
    log.clear();
    for (const CapturedLog::Line& line : CapturedLog::Lines()) {
      log += regex_replace(line.text, std::regex("\n$"), "") + "\n";
    }
  }

  std::string OtherCalls() {
    std::string text;
    const auto calls = server.Calls("");
    for (std::size_t i = callsBefore; i < calls.size(); ++i) {
      if (calls[i].method == "WaitForUpdates") continue;
      text += calls[i].method + " " + calls[i].type + " " + calls[i].value + "\n";
    }
    return text;
  }

  void Expect(const Section& section) {
    std::string actual = "no such section";
    if (section.name == "cache") actual = Caches();
    if (section.name == "signalled") actual = signalled;
    if (section.name == "version") actual = "[" + LastVersion() + "]\n";
    if (section.name == "request") actual = server.Calls("CreateFilter").back().argument;
    if (section.name == "calls") actual = OtherCalls();
    if (section.name == "failures") actual = std::to_string(Status().consecutiveFailures) + "\n";
    if (section.name == "error") actual = std::move(error);
    if (section.name == "log") actual = std::move(log);
    EXPECT_EQ(actual, section.text) << "in section " << section.name;
  }

  void ExpectNoMore() {
    EXPECT_EQ(error, "");
    EXPECT_EQ(log, "");
    error = log = "";
  }

  std::string signalled, set, error, log;
  std::vector<std::unique_ptr<NamedWaiter>> waiters;
  std::size_t callsBefore = 0;
  bool timeoutFed = false;
};

TEST_P(UpdateSetCaseTest, EndsAsWritten) {
  const std::vector<Section> sections = ReadCase(GetParam());
  ASSERT_FALSE(sections.empty());
  for (const auto& style : kStyles) {
    SCOPED_TRACE(style.name);
    pattern = style.pattern;
    replacement = style.replacement;
    Run(sections);
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

INSTANTIATE_TEST_SUITE_P(Cases, UpdateSetCaseTest, testing::ValuesIn(CaseFiles()),
                         [](const testing::TestParamInfo<fs::path>& file) {
                           return regex_replace(file.param.stem().string(), std::regex("-"), "_");
                         });

}  // namespace
}  // namespace KE::Service
