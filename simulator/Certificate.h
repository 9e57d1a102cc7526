// SPDX-License-Identifier: MIT
//
// A self-signed certificate for 127.0.0.1, made at start.
#pragma once

#include <string>

namespace sim {

// Writes certificate and key as PEM files into a folder. Throws std::runtime_error.
void MakeCertificate(const std::string& certFile, const std::string& keyFile);

}  // namespace sim
