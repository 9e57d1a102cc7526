// SPDX-License-Identifier: MIT
// Lists the roles with the privileges that they give and the identities that hold them:
//   roles [CONFIG-FILE]
#include <kecpp/inventory.h>

#include <cstdlib>
#include <iostream>

static void Print(const char* what, const std::vector<std::string>& keys) {
  std::cout << "\n  " << what;
  for (const std::string& key : keys) std::cout << ' ' << key;
}

int main(int argc, char** argv) try {
  kecpp::Options options{argc > 1 ? argv[1] : ""};
  options.systems = false;
  options.authorization = kecpp::Authorization::required;
  const kecpp::Inventory inventory(options);
  for (const kecpp::Role& role : inventory.Roles()) {
    std::cout << role.name;
    Print("gives", role.privileges);
    Print("held by", role.identities);
    std::cout << '\n';
  }
} catch (const kecpp::Error& error) {
  std::cerr << error.what() << '\n';
  return EXIT_FAILURE;
}
