# SPDX-License-Identifier: MIT
#
# A Conan 2 recipe that builds the libraries from the source archive of a release:
#   scripts/source-archive && cp packaging/conan/* FOLDER && cp build/source/kecpp-*.tar.gz FOLDER
#   cd FOLDER && conan create . --build=missing
import glob
import os

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, unzip

ARCHIVE = "kecpp-*.tar.gz"


class KecppConan(ConanFile):
    name = "kecpp"
    license = "MIT"
    description = "The inventory of a virtualization host, kept in memory for management agents"
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"
    exports_sources = ARCHIVE

    def set_version(self):
        archives = glob.glob(os.path.join(self.recipe_folder, ARCHIVE))
        if len(archives) == 1:
            self.version = os.path.basename(archives[0])[len("kecpp-"):-len(".tar.gz")]

    def validate(self):
        check_min_cppstd(self, 17)
        if self.settings.os != "Linux":
            raise ConanInvalidConfiguration("kecpp is for Linux")

    def requirements(self):
        self.requires("libcurl/[>=7.88 <9]")
        self.requires("nlohmann_json/[>=3.11 <4]", visible=False)  # headers, for our own sources

    def layout(self):
        cmake_layout(self)

    def source(self):
        archive = glob.glob(os.path.join(self.export_sources_folder, ARCHIVE))[0]
        unzip(self, archive, destination=self.source_folder, strip_root=True)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["KECPP_DEVELOPER"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))
        CMake(self).install()

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "kecpp")
        library = self.cpp_info.components["kecpp"]
        library.set_property("cmake_target_name", "kecpp::kecpp")
        library.set_property("pkg_config_name", "kecpp")
        library.libs = ["kecpp"]
        library.includedirs = [os.path.join("include", "kecpp")]
        library.requires = ["libcurl::libcurl"]
        values = self.cpp_info.components["inventory"]
        values.set_property("cmake_target_name", "kecpp::inventory")
        values.set_property("pkg_config_name", "kecpp-inventory")
        values.libs = ["kecpp-inventory"]
        values.requires = ["kecpp", "libcurl::libcurl", "nlohmann_json::nlohmann_json"]
