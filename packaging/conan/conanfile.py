import os
import re

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load, rmdir

required_conan_version = ">=2.0"


class KoFilesystemConan(ConanFile):
    name = "ko-filesystem"
    description = "A filesystem library for applications that use UTF-16"
    license = "MIT"
    topics = ("filesystem", "utf-16", "path")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "fPIC": [True, False], "tools": [True, False]}
    default_options = {"shared": False, "fPIC": True, "tools": False}

    @property
    def _root(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        lists = load(self, os.path.join(self._root, "CMakeLists.txt"))
        self.version = re.search(r"project\([^)]*VERSION (\S+)", lists)[1]

    def export_sources(self):
        # This checkout; a recipe of the index has the release's archive, by `source`, instead.
        for pattern in ("CMakeLists.txt", "LICENSE", "cmake/*", "ko/*", "tools/*"):
            copy(self, pattern, src=self._root, dst=self.export_sources_folder)

    def configure(self):
        if self.options.shared:
            self.options.rm_safe("fPIC")

    def layout(self):
        cmake_layout(self)

    def requirements(self):
        # The public headers include Date_Time and Exception.
        self.requires("boost/[>=1.74 <1.89]", transitive_headers=True)
        if self.options.tools:
            self.requires("cli11/[>=2.1 <3]")
            self.requires("nlohmann_json/[>=3.9 <4]")

    def validate(self):
        check_min_cppstd(self, 17)
        if self.settings.os not in ("Linux", "Macos"):
            raise ConanInvalidConfiguration("ko-filesystem is for POSIX hosts")

    def build_requirements(self):
        self.tool_requires("cmake/[>=3.25]")

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.variables["KO_FILESYSTEM_TESTS"] = False
        toolchain.variables["KO_FILESYSTEM_TOOLS"] = bool(self.options.tools)
        toolchain.generate()
        CMakeDeps(self).generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        copy(self, "LICENSE", src=self.source_folder, dst=os.path.join(self.package_folder, "licenses"))
        CMake(self).install()
        rmdir(self, os.path.join(self.package_folder, "lib", "cmake"))
        rmdir(self, os.path.join(self.package_folder, "lib", "pkgconfig"))
        rmdir(self, os.path.join(self.package_folder, "share"))

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "ko_filesystem")
        self.cpp_info.set_property("cmake_target_name", "ko::filesystem")
        self.cpp_info.set_property("pkg_config_name", "ko_filesystem")
        self.cpp_info.libs = ["ko_filesystem"]
        self.cpp_info.requires = ["boost::headers", "boost::filesystem", "boost::thread"]
        if self.options.tools:
            self.cpp_info.requires += ["cli11::cli11", "nlohmann_json::nlohmann_json"]
        if self.settings.os == "Macos":
            self.cpp_info.system_libs = ["iconv"]
