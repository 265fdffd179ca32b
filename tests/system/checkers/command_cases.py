# SPDX-License-Identifier: Apache-2.0
"""Commands that build the whole project. Here they build a small one."""
from case import add

COMMANDS = ("abi", "memcheck", "reproduce")

BUILD = """cmake_minimum_required(VERSION 3.25)
project(small LANGUAGES CXX)
foreach(library ul sarn)
  add_library(${library} SHARED library.cpp)
  target_include_directories(${library} PRIVATE include)
  install(TARGETS ${library})
endforeach()
foreach(program ul_tests sarn_tests sarn_module_tests sarn_injection_tests sarn_soak sarn_fuzz_replay)
  add_executable(${program} program.cpp)
  set_target_properties(${program} PROPERTIES RUNTIME_OUTPUT_DIRECTORY tests)
endforeach()
set_target_properties(sarn_fuzz_replay PROPERTIES RUNTIME_OUTPUT_DIRECTORY fuzz)
"""

PRESETS = """{"version": 6,
"configurePresets": [{"name": "release", "binaryDir": "build/release", "generator": "Ninja"},
    {"name": "packages", "inherits": "release", "binaryDir": "build/packages"}],
"buildPresets": [{"name": "release", "configurePreset": "release"},
    {"name": "packages", "configurePreset": "packages"}]}
"""


def make_project(at):
    at.copy("scripts/lib.sh", "tests/leaks.valgrind", *(f"scripts/commands/{name}" for name in COMMANDS))
    at.write("scripts/build-libcrypto", "#!/bin/sh\n", 0o755)
    at.write("scripts/packages.txt", "[build]\ncmake\n[package]\ncmake\n")
    at.write("CMakeLists.txt", BUILD)
    at.write("CMakePresets.json", PRESETS)
    at.write("include/pair.h", "struct Pair { int first; };\n")
    at.write("ul/include/empty.h", "")
    at.write("library.cpp",
             '#include "pair.h"\nint add(Pair* pair) { return pair->first + 1; }\nint two() { return 2; }\n')
    at.write("program.cpp", "#include <fcntl.h>\nint main() {\n}\n")
    at.write("fuzz/corpus/target/input", "")
    at.make("git", "init", "--quiet")
    at.make("git", "add", "--all")
    at.make("git", "-c", "user.name=a", "-c", "user.email=a", "commit", "--quiet", "--message", "a")
    at.write("tests/data/abi_base.txt", at.make("git", "rev-parse", "HEAD"))


def run(command):
    return ["env", "CXX={cxx}", f"scripts/commands/{command}"]


def replace(name, pattern, replacement):
    return lambda at: at.replace(name, pattern, replacement)


add("Abi", run("abi"), make_project, [
    ("FunctionThatIsGone", replace("library.cpp", "^int two.*", ""), "FAILED .* can break"),
    ("TypeThatHasGrown", replace("include/pair.h", "int first;", "int first; int second;"), "FAILED .* can break"),
])
add("Memcheck", run("memcheck"), make_project, [
    ("MemoryThatIsLost", replace("program.cpp", "^}", "static_cast<void>(*new volatile int(1)); }"),
     "ul_tests: status 99, 0 descriptors left open, 1 leaks"),
    ("DescriptorThatIsLeftOpen", replace("program.cpp", "^}", "open(\"/dev/null\", O_RDONLY); }"),
     "ul_tests: status 0, 1 descriptors left open"),
])
add("Reproduce", run("reproduce"), make_project, [
    ("FolderInTheLibrary", replace("library.cpp", "^int two.*", "const char* name() { return __FILE__; }"), "differ"),
])
