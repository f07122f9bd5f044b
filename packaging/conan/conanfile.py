"""Builds the tree that this file is part of: conan create packaging/conan"""

import re
from os.path import join
from pathlib import Path

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy


class KilnBase(ConanFile):
    name = "kilnbase"
    description = "Base library of a 3D surface-modelling application"
    license = "Apache-2.0"
    package_type = "library"
    settings = "os", "compiler", "build_type", "arch"
    options = {"shared": [True, False]}
    default_options = {"shared": True}

    @property
    def _tree(self):
        return Path(self.recipe_folder).resolve().parent.parent

    def set_version(self):
        text = (self._tree / "CMakeLists.txt").read_text(encoding="utf-8")
        self.version = re.search(r"^project\(KilnBase VERSION ([0-9.]+)", text, re.MULTILINE)[1]

    def validate(self):
        if self.settings.arch != "x86_64" or self.settings.compiler == "msvc":
            raise ConanInvalidConfiguration("libKilnBase is built for x86-64, by GCC or Clang")

    def layout(self):
        cmake_layout(self)

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "LICENSE", "cmake/*", "kilnbase/*", "vx/*", "packaging/*"):
            copy(self, pattern, src=str(self._tree), dst=self.export_sources_folder)

    def generate(self):
        toolchain = CMakeToolchain(self)
        for part in ("KILN_BUILD_TESTS", "KILN_BUILD_TOOLS", "KILN_BUILD_EXAMPLES",
                     "KILN_WARNINGS_AS_ERRORS"):
            toolchain.cache_variables[part] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", src=self.source_folder, dst=join(self.package_folder, "licenses"))

    def package_info(self):
        # The package brings its own files for CMake and pkg-config.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = [join("lib", "cmake", "KilnBase")]
        postfix = "-debug" if self.settings.build_type == "Debug" else ""
        self.cpp_info.libs = [f"KilnBase{postfix}", f"vx{postfix}"]
