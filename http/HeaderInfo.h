// SPDX-License-Identifier: MIT
//
// The extra header lines of a connection, in the order in which they were added.
//
// Thread safety: none.
#ifndef KECPP_HTTP_HEADERINFO_H
#define KECPP_HTTP_HEADERINFO_H

#include "foundation/KEExport.h"

namespace KELib {
namespace Http {

class HeaderIteratorImpl;

// A walk over header lines. Changing the list ends the iterator's life.
class KECPP_API HeaderIterator {
 public:
  virtual ~HeaderIterator();

  // Whether there is no line at this position.
  virtual bool End() = 0;

  // The current line, null at the end. It belongs to the list.
  virtual const char* operator*() = 0;
  virtual const char* operator->() = 0;

  // Go to the next line; at the end nothing happens. The second form returns the iterator as it
  // was.
  virtual HeaderIterator& operator++() = 0;
  virtual HeaderIteratorImpl operator++(int) = 0;
};

class KECPP_API HeaderInfo {
 public:
  virtual ~HeaderInfo();

  // Appends the line `key` + `value`; the key carries its ": ". Throws InvalidArgumentException for
  // a null key or value; an empty value is sent as a header without a value.
  virtual void AddHeader(const char* key, const char* value) = 0;

  // Removes the first line that begins with `key`, if there is one.
  virtual void RemoveHeader(const char* key) = 0;

  virtual bool HasHeaders() = 0;

  // The first line that begins with `key`, or null. It belongs to the list.
  virtual const char* GetHeader(const char* key) = 0;
};

}  // namespace Http
}  // namespace KELib

#endif
