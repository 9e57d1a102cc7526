// SPDX-License-Identifier: MIT
//
// Runs the files of cases/, what watches, update sets and failures make of a data sync, each in
// several writing styles (to the caches they are all the same), and those of loop/, how its loop
// begins, fails, goes on and ends, once. Cases that speak of nothing but watches, sets and caches
// run once more with the data sync's single steps instead of its walk. These sections do something:
//   watch FILTER    sets a watch up with this property list; the server names its filter FILTER.
//                   Without an argument the server answers what "next" says
//   set [VERSION]   the update set that arrives next; "returnval" and a version, 1 without an
//                   argument, are put around filter sets that stand alone
//   pass MS         the loop's clock, which stands still otherwise, goes on
//   again           the last set arrives once more
//   throw KIND      the next wait ends with this exception and this text
//   next METHOD [KIND]   the method's next call gives this answer, or ends so
//   answer METHOD   a property method gives this answer from now on; a wait times out
//   stop FILTER     ends the watch
//   task TASK       another thread waits for the task, whose filter has the same name
//   request-stop, cleanup           end it all
//   delete-cache TYPE, create-cache TYPE
// What arrives before the first watch is what the first cycle meets; else it ends with a time-out.
// These tell what is then true:
//   cache           what the caches hold (CacheDump.h), and what copies hold that change feeds keep
//   signalled       the filters whose waiters were signalled so far, in order
//   version         the version that the wait named which is now out
//   limit           how many milliseconds that wait may stay unanswered; 0: no limit of the loop's
//   request         the body of the last "CreateFilter"
//   calls           what else was called since the last section that did something
//   failures        the number of failed cycles in a row
//   status          all that the data sync says of itself but the version
//   told            how many entries a change feed gave since the last section that did something
//   outcome TASK    whether the task has succeeded, when the thread has come back
//   log, error      what that section made it log, and the exception of the watch; without such a
//                   section there must be none
#include <functional>
#include <future>
#include <map>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "datasync/PropertyList.h"
#include "datasync/StepWalk.h"
#include "datasync/SyncFixture.h"
#include "datasync/SyncSeams.h"
#include "support/CaseFile.h"
#include "support/FeedMirror.h"

namespace KE::Service {
namespace {

namespace fs = std::filesystem;
using std::regex_replace;

const struct {
  const char *name, *pattern, *replacement;
  Steps steps = Steps::none;
} kStyles[] = {
    {"as it stands", "(?!)", ""},
    {"on one line", ">\n *", ">"},
    {"with foreign line ends", "\n", "\r\n"},
    {"with comments", ">\n", ">\n<!-- <filterSet><val>none</val> -->\n"},
    {"with blanks in the tags", "([a-zA-Z\"])(/?)>\n", "$1 $2>\n"},
    {"with single quotes", "\"", "'"},
    {"value by value", "(?!)", "", Steps::values},
    {"list by list", "(?!)", "", Steps::lists},
    {"item by item", "(?!)", "", Steps::items},
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

class NamedWaiter : public CountingWaiter {
 public:
  NamedWaiter(std::string filter, std::string& all) : name(std::move(filter)), signalled(all) {}
  void Signal() override {
    signalled += name + "\n";
    CountingWaiter::Signal();
  }

 private:
  std::string name;
  std::string& signalled;
};

class UpdateSetCaseTest : public SyncFixture, public testing::WithParamInterface<fs::path> {
 protected:
  UpdateSetCaseTest() {
    GetSyncSeams().now = [] { return SyncTime(std::chrono::milliseconds(clock)); };
  }
  ~UpdateSetCaseTest() override {
    sync.reset();
    GetSyncSeams() = SyncSeams();
  }

  void Run(const std::vector<Section>& sections) {
    slow = std::make_unique<FeedMirror>(*sync);
    prompt = std::make_unique<FeedMirror>(*sync);
    // Only their mutexes order what reads the caches with what writes them, so that the thread
    // sanitizer sees who writes without one.
    std::atomic<bool> done{false};
    auto reader = std::async(std::launch::async, [&] {
      for (; !done; std::this_thread::sleep_for(std::chrono::microseconds(20))) Caches();
    });
    signalled = error = log = "";
    queued = timeoutFed = false;
    for (const Section& section : sections) {
      SCOPED_TRACE("in section " + section.name + " " + section.argument);
      if (Tells(section)) continue;
      ExpectNothingUntold();
      error = log = "";
      CapturedLog::Clear();
      callsBefore = server.Count("");
      Do(section);
      for (told = 0; prompt->Follow(1, 0) > 0;) ++told;
      if (section.name == "task") continue;  // its thread logs at any time
      for (const CapturedLog::Line& line : CapturedLog::Lines()) {
        log += regex_replace(line.text, std::regex("\n$"), "") + "\n";
      }
    }
    ExpectNothingUntold();
    EXPECT_EQ(slow->Dump(), Caches());
    done = true;
    reader.get();
    slow.reset();
    prompt.reset();
    server.Always("RetrieveAllPermissions", nullptr);
    MakeSync();
    references.clear();
  }

  std::string pattern, replacement;
  Steps steps = Steps::none;

 private:
  FakeServer::Answer Styled(const std::string& text) {
    return FakeServer::Text(regex_replace(text, std::regex(pattern), replacement));
  }

  std::string CachesAsFeedsTell() {
    const std::string held = Caches();
    EXPECT_EQ(prompt->Dump(), held);
    EXPECT_EQ(FeedMirror(*sync).Dump(), held);
    return held;
  }

  void ExpectNothingUntold() {
    EXPECT_TRUE(steps != Steps::none || (error.empty() && log.empty())) << error << log;
  }

  void Do(const Section& section) {
    const std::string& argument = section.argument;
    const std::string line = section.text.substr(0, section.text.find('\n'));
    KELib::KEString type(argument.c_str());
    const std::map<std::string, std::function<void()>> doers = {
        {"watch", [&] { SetUpWatch(argument, section.text); }},
        {"set", [&] { ArriveSet(set = WholeSet(section.text, argument)); }},
        {"pass", [&] { clock += std::stoi(argument); }},
        {"again", [&] { ArriveSet(set); }},
        {"throw", [&] { Arrive(Failure(argument, line)); }},
        {"next",
         [&] {
           const std::string& kind = section.second;
           server.Then(argument, kind.empty() ? Styled(section.text) : Failure(kind, line));
         }},
        {"answer",
         [&] {
           server.Always(argument, Styled(section.text));
           if (Status().loopRunning) Arrive(Failure("TimedOut", ""));
           CapturedLog::Clear();
         }},
        {"stop",
         [&] {
           const bool isMethod = argument.find('/') != std::string::npos;
           const char* kind = isMethod ? "PropertyMethod" : "PropertyFilter";
           sync->StopDataSync(Reference(kind, argument).get());
           references.erase(argument);
         }},
        {"task", [&] { StartTask(argument); }},
        {"request-stop", [&] { sync->RequestStop(); }},
        {"cleanup", [&] { sync->Cleanup(); }},
        {"delete-cache", [&] { sync->GetCache()->DeleteDataCache(type); }},
        {"create-cache", [&] { sync->GetCache()->CreateDataCache(type); }},
    };
    doers.at(section.name)();
    if (section.name != "request-stop" && section.name != "cleanup") return;
    AwaitLoopEnd();
    references.clear();
  }

  static std::string WholeSet(const std::string& text, const std::string& version) {
    if (text.compare(0, 10, "<filterSet") != 0) return text;
    return "<returnval>\n<version>" + (version.empty() ? "1" : version) + "</version>\n" + text +
           "</returnval>\n";
  }

  void StartTask(const std::string& task) {
    NameNextFilter(task);
    const std::size_t filters = server.Count("CreateFilter");
    tasks[task] = std::async(std::launch::async, [this, task, waiter = Waiter(task)] {
      return WaitForTask(task, waiter);
    });
    server.AwaitCalls("CreateFilter", filters + 1);
  }

  KELib::KEWaiter* Waiter(const std::string& name) {
    return waiters.emplace_back(std::make_unique<NamedWaiter>(name, signalled)).get();
  }

  void NameNextFilter(const std::string& name) {
    server.Then("CreateFilter",
                Styled("<returnval type=\"PropertyFilter\">" + name + "</returnval>"));
  }

  void SetUpWatch(const std::string& name, const std::string& elements) {
    const bool hasNamedFilter = !name.empty() && elements.find("_p_") != std::string::npos;
    if (hasNamedFilter) NameNextFilter(name);
    if (hasNamedFilter && !queued && !timeoutFed && !Status().loopRunning) {
      server.FeedError(KELib::RequestTimedOutException("first cycle"));
      timeoutFed = true;
    }
    error = Thrown([&] {
      PropertyTexts list(elements);
      const RefPtr root = Reference("Folder", "root");
      const bool isTask = PropertyList(list).IsTaskWatch();  // then without waiting for the task
      const auto reference = isTask ? sync->CreatePropFilter(root.get(), list, Waiter(name))
                                    : sync->SetupDataSync(root.get(), list, Waiter(name));
      if (isTask) sync->StartSyncData();
      EXPECT_EQ(reference->value.Cstr(), name);
      EXPECT_EQ(references.emplace(name, reference).first->second, reference);
      AwaitQuietWait();
      if (timeoutFed) CapturedLog::Clear();
      queued = timeoutFed = false;
      for (const std::string& text : std::exchange(heldBack, {})) ArriveSet(text);
    });
    error = error == "nothing" ? "" : error + "\n";
  }

  void ArriveSet(const std::string& text) {
    if (steps == Steps::none) return Arrive(Styled(text));
    if (!Status().loopRunning) return heldBack.push_back(text);
    ApplyBySteps(*sync, text, steps);
  }

  void Arrive(const FakeServer::Answer& answer) {
    const std::size_t waits = server.Count("WaitForUpdates");
    const bool isAwaited = Status().loopRunning;  // the answer may end the loop
    server.Then("WaitForUpdates", answer);
    if (isAwaited) {
      AwaitQuietWait(waits + 1);
    } else {
      queued = true;
    }
  }

  std::string OtherCalls() {
    std::string text;
    const auto calls = server.Calls("");
    for (std::size_t i = callsBefore; i < calls.size(); ++i) {
      if (calls[i].method == "WaitForUpdates") continue;
      text += calls[i].method;
      if (!calls[i].type.empty()) text += " " + calls[i].type + " " + calls[i].value;
      text += "\n";
    }
    return text;
  }

  std::string StatusText() {
    const KESyncStatus status = Status();
    EXPECT_EQ(status.lastFailureTime > 0, !status.lastFailure.Empty());
    return std::string(status.firstFillDone ? "filled" : "empty") +
           (status.loopRunning ? " running " : " ended ") + std::to_string(status.setsApplied) +
           " applied " + std::to_string(status.consecutiveFailures) + " failures [" +
           status.lastFailure.Cstr() + "]\n";
  }

  // Compares if the section is one that tells what is true.
  bool Tells(const Section& section) {
    const std::map<std::string, std::function<std::string()>> tellers = {
        {"cache", [&] { return CachesAsFeedsTell(); }},
        {"signalled", [&] { return signalled; }},
        {"version", [&] { return "[" + LastVersion() + "]\n"; }},
        {"limit",
         [&] { return std::to_string(server.Calls("WaitForUpdates").back().limit) + "\n"; }},
        {"request", [&] { return server.Calls("CreateFilter").back().argument; }},
        {"calls", [&] { return OtherCalls(); }},
        {"failures", [&] { return std::to_string(Status().consecutiveFailures) + "\n"; }},
        {"status", [&] { return StatusText(); }},
        {"outcome", [&] { return tasks[section.argument].get() ? "success\n" : "no success\n"; }},
        {"error", [&] { return std::exchange(error, ""); }},
        {"log", [&] { return std::exchange(log, ""); }},
        {"told", [&] { return std::to_string(told) + "\n"; }},
    };
    const auto teller = tellers.find(section.name);
    if (teller == tellers.end()) return false;
    if (steps != Steps::none && section.name != "cache") return true;
    EXPECT_EQ(teller->second(), section.text);
    return true;
  }

  static inline std::atomic<long long> clock{0};

  std::unique_ptr<FeedMirror> slow, prompt;  // one takes in the end only
  std::string signalled, set, error, log;
  std::vector<std::string> heldBack;  // for the steps, until there is a watch
  std::vector<std::unique_ptr<NamedWaiter>> waiters;
  std::map<std::string, Stub::ManagedObjectReference*> references;  // of what is watched
  std::map<std::string, std::future<bool>> tasks;
  std::size_t callsBefore = 0;
  int told = 0;
  bool queued = false, timeoutFed = false;  // for the first cycle to meet
};

// Whether the single steps can do what the case wants.
bool IsForSteps(const std::vector<Section>& sections) {
  return std::all_of(sections.begin(), sections.end(), [](const Section& section) {
    const std::string names =
        " watch set again answer stop cache signalled told version request calls ";
    return names.find(" " + section.name + " ") != std::string::npos;
  });
}

TEST_P(UpdateSetCaseTest, EndsAsWritten) {
  const std::vector<Section> sections = ReadCase(GetParam());
  ASSERT_FALSE(sections.empty());
  for (const auto& style : kStyles) {
    SCOPED_TRACE(style.name);
    if (style.steps != Steps::none && !IsForSteps(sections)) continue;
    steps = style.steps;
    pattern = style.pattern;
    replacement = style.replacement;
    Run(sections);
    if (GetParam().parent_path().stem() == "loop") break;
  }
}

std::vector<fs::path> AllCases() {
  std::vector<fs::path> files = CaseFiles(KECPP_TEST_DATA "/cases");
  const std::vector<fs::path> loop = CaseFiles(KECPP_TEST_DATA "/loop");
  files.insert(files.end(), loop.begin(), loop.end());
  return files;
}

INSTANTIATE_TEST_SUITE_P(Cases, UpdateSetCaseTest, testing::ValuesIn(AllCases()),
                         [](const testing::TestParamInfo<fs::path>& file) {
                           return regex_replace(file.param.stem().string(), std::regex("-"), "_");
                         });

}  // namespace
}  // namespace KE::Service
