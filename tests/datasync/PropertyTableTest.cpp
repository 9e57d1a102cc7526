// SPDX-License-Identifier: MIT
#include "datasync/PropertyTable.h"

#include <gtest/gtest.h>

#include <string>

namespace KE::Service {
namespace {

void Nothing(KELib::Stub::KEStubBase&, const KELib::Xml::XmlSlice&, ObjectCaches&) {}

constexpr Property kRows[] = {
    Value("name", Nothing),
    References("host", Nothing),
    Value("a.path.that.is.longer.than.any.that.servers.have.today", Nothing),
    Value("size", Nothing),
};
constexpr PropertyTable kTable = TableOf<kRows>();

TEST(PropertyTable, FindsPathsOfEqualAndOfAnyLength) {
  const auto find = [](std::string_view path) {
    return kTable.Find({path.data(), static_cast<unsigned int>(path.size())});
  };
  for (const Property& row : kRows) EXPECT_EQ(&row, find(row.path)) << row.path;
  for (const char* path :
       {"", "nam", "sizf", "hosts", "a.path.that.is.longer.than.any.of.them.is"}) {
    EXPECT_EQ(nullptr, find(path)) << path;
  }
  EXPECT_EQ(nullptr, find(std::string(kRows[2].path) + "s"));
}

}  // namespace
}  // namespace KE::Service
