"""Builds and runs the consumer of the tests with the package."""

from conan import ConanFile
from conan.tools.build import can_run
from conan.tools.cmake import CMake, cmake_layout


class KilnBaseTest(ConanFile):
    settings = "os", "compiler", "build_type", "arch"
    generators = "CMakeToolchain", "VirtualRunEnv"

    def requirements(self):
        self.requires(self.tested_reference_str)

    def layout(self):
        cmake_layout(self)

    def build(self):
        cmake = CMake(self)
        cmake.configure(build_script_folder="../../../tests/consumer")
        cmake.build()

    def test(self):
        if can_run(self):
            for program in ("consumer", "catalogs", "version"):
                self.run(f"{self.cpp.build.bindir}/{program}", env="conanrun")
