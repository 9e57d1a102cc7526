// SPDX-License-Identifier: MIT
#include "foundation/KEFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

namespace KELib {
namespace {

class KEFileTest : public testing::Test {
 protected:
  KEFileTest() {
    std::string pattern = testing::TempDir() + "kefile-XXXXXX";
    folder = mkdtemp(pattern.data());
    path = folder + "/file";
  }
  ~KEFileTest() override { std::filesystem::remove_all(folder); }

  void Put(const std::string& content) { std::ofstream(path, std::ios::binary) << content; }
  std::string Content() const {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  static std::unique_ptr<KEFile> Open(const std::string& where, int mode) {
    KEString name(where.c_str());
    return std::unique_ptr<KEFile>(CreateKEFile(name, mode));
  }

  std::string folder, path;
};

TEST_F(KEFileTest, ReadsAroundTheEdgesOfItsPieces) {
  for (const unsigned int size : {0u, 1u, 255u, 256u, 257u, 512u, 100000u}) {
    const std::string content(size, 'x');
    Put(content);
    const auto file = Open(path, FILE_IO_READ);
    KEString out;
    EXPECT_TRUE(file->Exists() && file->Read(out) && file->Read(out));
    EXPECT_EQ(content + content, out.Cstr()) << "appended, from the start again";
  }
  Put("xx" + std::string(1, '\0') + std::string(297, 'x'));
  KEString out;
  EXPECT_TRUE(Open(path, FILE_IO_READ)->Read(out));
  EXPECT_EQ(std::string(2 + 44, 'x'), out.Cstr()) << "a NUL ends the piece that it stands in";
}

TEST_F(KEFileTest, FailedReads) {
  KEString out("unchanged");
  EXPECT_FALSE(Open(path, FILE_IO_READ)->Exists());
  EXPECT_FALSE(Open(path, FILE_IO_READ)->Read(out));
  EXPECT_FALSE(Open(path, FILE_IO_WRITE)->Read(out));
  EXPECT_FALSE(Open(path, 7)->Exists());
  EXPECT_FALSE(Open("/dev/zero", FILE_IO_READ)->Read(out));
  EXPECT_STREQ("unchanged", out.Cstr());
  EXPECT_FALSE(Open(folder, FILE_IO_READ)->Read(out));
  EXPECT_STREQ("", out.Cstr());
}

TEST_F(KEFileTest, WritesEverythingOrSaysSoAndTestsByCreating) {
  EXPECT_TRUE(Open(path, FILE_IO_WRITE)->Exists());
  EXPECT_TRUE(std::filesystem::exists(path));
  for (const unsigned int size : {0u, 256u, 1025u, 100000u}) {
    KEString text(std::string(size, 'y').c_str());
    EXPECT_TRUE(Open(path, FILE_IO_WRITE)->Write(text));
    EXPECT_FALSE(Open(path, FILE_IO_READ)->Write(text)) << "a reading object never touches it";
    EXPECT_EQ(text.Cstr(), Content());
  }
  EXPECT_TRUE(Open(path, FILE_IO_WRITE)->Exists());
  EXPECT_EQ("", Content());
  KEString text("lost");
  EXPECT_FALSE(Open("/dev/full", FILE_IO_WRITE)->Write(text)) << "noticed only by the flush";
  EXPECT_FALSE(Open(folder + "/none/file", FILE_IO_WRITE)->Write(text));
}

}  // namespace
}  // namespace KELib
