// SPDX-License-Identifier: MIT
#include "tools/agent/indications/StateFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>

namespace tools::agent {
namespace {

constexpr std::size_t MOST_BYTES = std::size_t{16} << 20;
constexpr int MOST_ASIDE = 1000;

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : number(descriptor) {}
  ~Descriptor() {
    if (number >= 0) close(number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Number() const { return number; }

 private:
  const int number;
};

bool WriteAll(int file, const std::string& text) {
  for (std::size_t written = 0; written < text.size();) {
    const ssize_t count = write(file, text.data() + written, text.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    written += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

StateFile::StateFile(const std::string& folderPath, const std::string& fileName)
    : folder(folderPath),
      name(fileName),
      directory(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (directory < 0) Fail("cannot use the folder");
  lock = openat(directory, "lock", O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
  const bool isLocked = lock >= 0 && flock(lock, LOCK_EX | LOCK_NB) == 0;
  if (isLocked) return;
  const int reason = errno;
  if (lock >= 0) close(lock);
  close(directory);
  errno = reason;
  Fail(reason == EWOULDBLOCK ? "another agent uses the folder" : "cannot write to the folder");
}

StateFile::~StateFile() {
  close(lock);
  close(directory);
}

void StateFile::Fail(const char* what) const {
  throw std::runtime_error(std::string(what) + " (" + folder +
                           "): " + std::generic_category().message(errno));
}

std::optional<std::string> StateFile::Read() const {
  const Descriptor file(openat(directory, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (file.Number() < 0 && errno == ENOENT) return {};
  if (file.Number() < 0) Fail("cannot read the subscriptions");
  std::string text;
  std::array<char, 65536> buffer;
  for (;;) {
    const ssize_t count = read(file.Number(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail("cannot read the subscriptions");
    if (count == 0) return text;
    text.append(buffer.data(), static_cast<std::size_t>(count));
    if (text.size() > MOST_BYTES) return "";  // no file of ours
  }
}

void StateFile::Write(const std::string& text) const {
  const std::string fresh = name + ".new";
  {
    const Descriptor file(openat(directory, fresh.c_str(),
                                 O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW,
                                 S_IRUSR | S_IWUSR));
    if (file.Number() < 0 || !WriteAll(file.Number(), text) || fsync(file.Number()) != 0) {
      Fail("cannot write the subscriptions");
    }
  }
  if (renameat(directory, fresh.c_str(), directory, name.c_str()) != 0 || fsync(directory) != 0) {
    Fail("cannot write the subscriptions");
  }
}

std::string StateFile::SetAside() const {
  for (int number = 1; number <= MOST_ASIDE; ++number) {
    const std::string other = name + ".damaged-" + std::to_string(number);
    if (linkat(directory, name.c_str(), directory, other.c_str(), 0) != 0) {
      if (errno == EEXIST) continue;
      Fail("cannot rename the subscriptions");
    }
    if (unlinkat(directory, name.c_str(), 0) != 0 || fsync(directory) != 0) {
      Fail("cannot rename the subscriptions");
    }
    return folder + "/" + other;
  }
  errno = EEXIST;
  Fail("cannot rename the subscriptions");
}

}  // namespace tools::agent
