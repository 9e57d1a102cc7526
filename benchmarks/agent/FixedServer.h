// SPDX-License-Identifier: MIT
//
// A server of the HTTP library that the agent uses, which does nothing but answer: what the agent's
// own work costs shows beside it.
#ifndef KECPP_BENCHMARKS_AGENT_FIXEDSERVER_H
#define KECPP_BENCHMARKS_AGENT_FIXEDSERVER_H

#include <cstddef>

namespace bench {

// Answers every POST with the same text of so many bytes, on a free port that it prints as the
// agent does, until it is ended. Each connection has its own thread and is kept.
int ServeFixedText(std::size_t bytes);

}  // namespace bench

#endif
