# SPDX-License-Identifier: MIT
# shellcheck shell=sh disable=SC2034
#
# To be sourced. What the project needs from Debian, and a function that sees to it.

BUILD_PACKAGES="g++ cmake ninja-build pkg-config libcurl4-openssl-dev libssl-dev libcli11-dev
  nlohmann-json3-dev libcpp-httplib-dev libpugixml-dev libcrypt-dev libgtest-dev libgmock-dev
  sblim-wbemcli mandoc curl"
BROWSER_PACKAGES="chromium chromium-driver python3"
CLIENT_PACKAGES="python3 python3-requests python3-ply python3-yaml python3-urllib3
  python3-jsonschema libxml2-utils meson mypy"
PYTHON_PACKAGES="pybind11-dev python3-dev"  # without them the package for Python is not built
BENCHMARK_PACKAGES="libpugixml-dev librapidxml-dev libxml2-dev libexpat1-dev gsoap libgsoap-dev
  gnuplot-nox valgrind"
ANALYSIS_PACKAGES="clang clang-tidy clang-format abigail-tools"
MUTANT_PACKAGES="clang python3 python3-clang"
FUZZ_PACKAGES="clang libclang-rt-dev"  # clang's own version of it, in every release
PACKAGING_PACKAGES="dpkg-dev file mandoc lintian"
REFERENCE_PACKAGES="doxygen"
FRESH_MACHINE_PACKAGES="debootstrap git"

is_installed() {
  dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'ok installed'
}

# require_packages NAME...: installs the packages that are missing. Without root it names them in
# one line and ends the script.
require_packages() {
  missing=
  for package in "$@"; do
    is_installed "$package" || missing="$missing $package"
  done
  [ -n "$missing" ] || return 0
  if [ "$(id -u)" -ne 0 ]; then
    echo "Debian packages are missing. As root: apt-get install$missing" >&2
    exit 1
  fi
  # shellcheck disable=SC2086 # a list of names
  { apt-get update -q && DEBIAN_FRONTEND=noninteractive apt-get install -y -q \
      --no-install-recommends $missing; } >&2
}
