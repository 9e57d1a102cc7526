// SPDX-License-Identifier: MIT
//
// Reads or writes one small text file as a whole: a configuration document, a password, a process
// identifier. A file object is bound to one path and one direction.
//
// No operation throws for a failing file (std::bad_alloc apart): every failure is a false result.
// Thread safety: an object serialises its own operations with its mutex; two objects on one path
//   know nothing of each other.
#ifndef KECPP_FOUNDATION_KEFILE_H
#define KECPP_FOUNDATION_KEFILE_H

#include <cstdio>
#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEMutex.h"
#include "foundation/KEStringBuffer.h"
#include "foundation/KEThreadAnnotations.h"

namespace KELib {

// The direction of a file object: 0 reads, 1 writes.
typedef int FileIoMode;
extern KECPP_API const FileIoMode FILE_IO_READ;
extern KECPP_API const FileIoMode FILE_IO_WRITE;

// The fopen modes "rb" and "wbc", indexed by FileIoMode.
extern KECPP_API const char* const FileIoModeStr[2];

class KECPP_API KEFile {
 public:
  virtual ~KEFile();

  // Whether the file can be opened in the object's own direction. An object that writes thereby
  // creates the file, or empties it.
  virtual bool Exists() = 0;

  // Appends the file's text to `out`; a NUL ends the 256-byte piece that it is in. False for an
  // object that writes or a file that cannot be opened (`out` stays as it was), after a read error
  // (`out` is empty, or ends with what was read before), and for a file above 64 MiB, which is no
  // small text file: a device, for example, never ends.
  virtual bool Read(KEString& out) = 0;
  bool Read(KEStringBuffer& out) { return Read(KEStringEdit(out).Text()); }

  // Replaces the file's content by `text`. True when every character reached the system. False for
  // an object that reads, whose file is not touched.
  virtual bool Write(KEString& text) = 0;
};

// The file below a path, through the C library's streams.
class KECPP_API KEFileImpl : public KEFile {
 public:
  // Copies the path. Nothing is opened yet.
  KEFileImpl(KEString& filePath, FileIoMode direction);
  KEFileImpl(const KEFileImpl&) = delete;
  KEFileImpl& operator=(const KEFileImpl&) = delete;
  ~KEFileImpl() override;

  bool Exists() override;
  using KEFile::Read;
  bool Read(KEString& out) override;
  bool Write(KEString& text) override;

  // Opens the stream in the requested direction, closing one that is open in the other. True when a
  // stream is open afterwards. For callers that hold the object's mutex, or its only user.
  bool Init(FileIoMode requested) KECPP_REQUIRES(mutex);

  // Closes the stream, if one is open, and flushes what was written. False when that failed. For
  // the same callers.
  bool Close() KECPP_REQUIRES(mutex);

 private:
  bool ReadStream(KEString& out) KECPP_REQUIRES(mutex);
  bool WriteStream(const char* text, unsigned int length) KECPP_REQUIRES(mutex);

  KEString path;  // constant, as the next
  FileIoMode mode;
  FILE* stream KECPP_GUARDED_BY(mutex);
  std::unique_ptr<KEMutex> mutex;
};

// A file object for `path`, which is copied. Nothing is opened yet. Owned by the caller.
KECPP_API KEFile* CreateKEFile(KEString& path, FileIoMode mode);

}  // namespace KELib

#endif
