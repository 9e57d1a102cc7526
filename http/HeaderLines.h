// SPDX-License-Identifier: MIT
//
// Header lines as libcurl wants them.
#ifndef KECPP_HTTP_HEADERLINES_H
#define KECPP_HTTP_HEADERLINES_H

struct curl_slist;

namespace KELib {
namespace Http {

// A copy of the list, owned by the caller. A line with nothing behind its colon ("Name: ") would
// not be sent at all; it becomes "Name;", which is sent as a header without a value. Null for an
// empty list and when memory runs out.
curl_slist* CopyHeaderLines(const curl_slist* lines);

}  // namespace Http
}  // namespace KELib

#endif
