"""kx7text - recipe for Conan 2, of the sources that this file is part of: conan create packaging/conan"""
import os

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy


class Kx7TextConan(ConanFile):
    name = "kx7text"
    version = "1.0.0"
    description = "Character-set conversion and UTF-16 text: 41 character sets, no dependency"
    license = "MIT"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "tools": [True, False]}
    default_options = {"shared": True, "tools": False}
    package_type = "library"

    def export_sources(self):
        root = os.path.join(self.recipe_folder, "..", "..")
        for pattern in ("CMakeLists.txt", "LICENSE", "cli/*", "cmake/*", "kx7/*", "packaging/*", "share/*"):
            copy(self, pattern, root, self.export_sources_folder)

    def requirements(self):
        if self.options.tools:
            self.requires("cli11/[>=2.1 <3]")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["KX7_BUILD_TESTS"] = False
        toolchain.cache_variables["KX7_BUILD_CLI"] = bool(self.options.tools)
        toolchain.cache_variables["KX7_INSTALL_SHARED"] = bool(self.options.shared)
        toolchain.cache_variables["KX7_INSTALL_STATIC"] = not self.options.shared
        toolchain.generate()
        CMakeDeps(self).generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "kx7text")
        self.cpp_info.set_property("cmake_target_name", "kx7text::kx7text")
        self.cpp_info.set_property("pkg_config_name", "kx7text")
        self.cpp_info.libs = ["kx7text"]
        self.cpp_info.system_libs = ["pthread"]
