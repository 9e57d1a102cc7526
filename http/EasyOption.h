// SPDX-License-Identifier: MIT
//
// Sets one option of a handle of libcurl.
#ifndef KECPP_HTTP_EASYOPTION_H
#define KECPP_HTTP_EASYOPTION_H

namespace KELib {
namespace Http {

// Which error a refused option is reported as.
struct OptionError {
  const char* message;
  const char* code;
};

// Throw HttpException with that message and code when the option is refused. `option` is one of the
// library's CURLOPT constants; the library copies texts, but only keeps pointers to anything else.
// Numbers are passed on as `long`, as it expects them.
void SetEasyOption(void* easy, int option, long value, const OptionError& error);
void SetEasyOption(void* easy, int option, const char* text, const OptionError& error);
void SetEasyOption(void* easy, int option, void* object, const OptionError& error);

}  // namespace Http
}  // namespace KELib

#endif
