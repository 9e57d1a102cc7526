// SPDX-License-Identifier: MIT
#include "http/HeaderInfo.h"

namespace KELib {
namespace Http {

HeaderIterator::~HeaderIterator() = default;
HeaderInfo::~HeaderInfo() = default;

}  // namespace Http
}  // namespace KELib
