// SPDX-License-Identifier: MIT
#include "foundation/KEFile.h"

#include <stdio_ext.h>

#include <algorithm>
#include <cstddef>

#include "foundation/KEMutexGuard.h"
#include "foundation/KEStringBuffer.h"

namespace KELib {

const FileIoMode FILE_IO_READ = 0;
const FileIoMode FILE_IO_WRITE = 1;
const char* const FileIoModeStr[2] = {"rb", "wbc"};

namespace {

constexpr unsigned int CHUNK_SIZE = 256;
constexpr unsigned int LARGEST_FILE = 64u << 20;
constexpr unsigned int CHUNKS_BEFORE_FLUSH = 3;

// Closes a file's stream however the scope is left.
struct StreamCloser {
  KEFileImpl& file;
  ~StreamCloser() { file.Close(); }
};

}  // namespace

KEFile::~KEFile() = default;

KEFileImpl::KEFileImpl(KEString& filePath, FileIoMode direction)
    : path(filePath), mode(direction), stream(nullptr), mutex(new KEMutex) {}

KEFileImpl::~KEFileImpl() {
  Close();
}

bool KEFileImpl::Init(FileIoMode requested) {
  if (requested != FILE_IO_READ && requested != FILE_IO_WRITE) {
    return false;
  }
  if (stream && (__fwritable(stream) != 0) != (requested == FILE_IO_WRITE)) {
    Close();
  }
  if (!stream) {
    stream = std::fopen(path.Cstr(), FileIoModeStr[requested]);
  }
  return stream != nullptr;
}

bool KEFileImpl::Close() {
  if (!stream) {
    return true;
  }
  const bool closed = std::fclose(stream) == 0;
  stream = nullptr;
  return closed;
}

bool KEFileImpl::Exists() {
  KEMutexGuard guard(mutex.get());
  return Init(mode);
}

bool KEFileImpl::Read(KEString& out) {
  KEMutexGuard guard(mutex.get());
  if (mode != FILE_IO_READ || !Init(FILE_IO_READ)) {
    return false;
  }
  const StreamCloser closer{*this};
  return ReadStream(out);
}

bool KEFileImpl::ReadStream(KEString& out) {
  KEStringBuffer text(0);
  char chunk[CHUNK_SIZE + 1];
  std::size_t total = 0;
  std::size_t got = 0;
  do {
    got = std::fread(chunk, 1, CHUNK_SIZE, stream);
    chunk[got] = '\0';
    text.Append(chunk, 0);
    total += got;
    if (total > LARGEST_FILE) {
      return false;
    }
  } while (got == CHUNK_SIZE && !std::ferror(stream));
  const bool succeeded = !std::ferror(stream);
  out.Append(text.Str(), 0);
  if (!succeeded && got == 0) {
    out.Clear();
  }
  return succeeded;
}

bool KEFileImpl::Write(KEString& text) {
  KEMutexGuard guard(mutex.get());
  // The direction is tested first: opening for writing would empty the file of a reading object.
  if (mode != FILE_IO_WRITE || !Init(FILE_IO_WRITE)) {
    return false;
  }
  const bool written = WriteStream(text.Cstr(), text.Length());
  return Close() && written;
}

bool KEFileImpl::WriteStream(const char* text, unsigned int length) {
  unsigned int chunks = 0;
  for (unsigned int done = 0; done < length;) {
    const unsigned int wanted = std::min(CHUNK_SIZE, length - done);
    if (std::fwrite(text + done, 1, wanted, stream) != wanted) {
      return false;
    }
    done += wanted;
    if (++chunks > CHUNKS_BEFORE_FLUSH && std::fflush(stream) != 0) {
      return false;
    }
  }
  return true;
}

KEFile* CreateKEFile(KEString& path, FileIoMode mode) {
  return new KEFileImpl(path, mode);
}

}  // namespace KELib
