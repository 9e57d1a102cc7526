// SPDX-License-Identifier: MIT
#include "benchmarks/Contender.h"

namespace bench {

std::unique_ptr<Contender> MakeLibraryContender();
std::unique_ptr<Contender> MakeLibraryContenderWithFeed();
std::unique_ptr<Contender> MakePugixmlContender();
std::unique_ptr<Contender> MakeRapidxmlContender();
std::unique_ptr<Contender> MakeRapidxmlInSituContender();
std::unique_ptr<Contender> MakeRapidxmlBySetContender();
std::unique_ptr<Contender> MakeHandContender();
std::unique_ptr<Contender> MakeBareContender();
#ifdef KECPP_BENCH_LIBXML2
std::unique_ptr<Contender> MakeLibxmlSaxContender();
std::unique_ptr<Contender> MakeLibxmlReaderContender();
#endif
#ifdef KECPP_BENCH_EXPAT
std::unique_ptr<Contender> MakeExpatContender();
#endif
#ifdef KECPP_BENCH_GSOAP
std::unique_ptr<Contender> MakeGsoapContender();
#endif

namespace {

const struct {
  const char* name;
  std::unique_ptr<Contender> (*make)();
} kContenders[] = {
    {"kecpp", MakeLibraryContender},
    {"kecpp-feed", MakeLibraryContenderWithFeed},
    {"pugixml", MakePugixmlContender},
    {"rapidxml", MakeRapidxmlContender},
    {"rapidxml-in-situ", MakeRapidxmlInSituContender},
    {"rapidxml-by-set", MakeRapidxmlBySetContender},
    {"by-hand", MakeHandContender},
    {"bare", MakeBareContender},
#ifdef KECPP_BENCH_LIBXML2
    {"libxml2-sax", MakeLibxmlSaxContender},
    {"xmlTextReader", MakeLibxmlReaderContender},
#endif
#ifdef KECPP_BENCH_EXPAT
    {"expat", MakeExpatContender},
#endif
#ifdef KECPP_BENCH_GSOAP
    {"gsoap", MakeGsoapContender},
#endif
};

}  // namespace

std::vector<std::string> ContenderNames() {
  std::vector<std::string> names;
  for (const auto& contender : kContenders) names.emplace_back(contender.name);
  return names;
}

std::unique_ptr<Contender> MakeContender(const std::string& name) {
  for (const auto& contender : kContenders) {
    if (name == contender.name) return contender.make();
  }
  return nullptr;
}

}  // namespace bench
