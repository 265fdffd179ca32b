# SPDX-License-Identifier: Apache-2.0
"""Checks of the products: exports, headers, the bill of materials, projects that use the libraries."""
from case import add

# A library of two functions and its list of exports.
def build_library(at, source):
    at.write("library.cpp", source)
    at.make("{cxx}", "-shared", "-fPIC", "-nostdlib", "-o", "library.so", "library.cpp")


def make_library_and_list(at):
    build_library(at, "namespace ul { int add(int a) { return a; } int sub(int a) { return a; } }")
    at.make(*EXPORTS, "-DUPDATE=1", "-P", EXPORTS_SCRIPT)


def add_foreign_symbol(at):
    build_library(at, "namespace ul { int add(int a) { return a; } } extern \"C\" int EVP_mine() { return 1; }")
    at.make(*EXPORTS, "-DUPDATE=1", "-P", EXPORTS_SCRIPT)


EXPORTS = ["{cmake}", "-DLIBRARY={work}/library.so", "-DLIST={work}/list.txt", "-DNM={nm}", "-DOBJDUMP={objdump}"]
EXPORTS_SCRIPT = "{source}/tests/system/package/check_exports.cmake"
add("Exports", [*EXPORTS, "-P", EXPORTS_SCRIPT], make_library_and_list, [
    ("SymbolThatIsGone", lambda at: at.append("list.txt", "_ZN2ul3mulEi\n"), r"gone: _ZN2ul3mulEi new:"),
    ("SymbolThatIsNotListed", lambda at: at.replace("list.txt", r"^_ZN2ul3addEi\n", ""), r"new: _ZN2ul3addEi If"),
    ("SymbolThatIsNotOurs", add_foreign_symbol, r"exports EVP_mine, which is not its own"),
])


def build_with_initialiser(at):
    at.write("library.cpp", "struct Object { Object(); int value; }; Object::Object() : value(1) {} Object object;")
    at.make("{cxx}", "-shared", "-fPIC", "-o", "library.so", "library.cpp")


def build_without_initialiser(at):
    at.write("library.cpp", "int object = 1;")
    at.make("{cxx}", "-shared", "-fPIC", "-o", "library.so", "library.cpp")


add("Initialisers", ["{cmake}", "-DOUTPUT=[.]init_array +00000008 ", "-P", "{source}/tests/support/expect_output.cmake",
                     "--", "{objdump}", "-h", "-j", ".init_array", "{work}/library.so"], build_without_initialiser, [
    ("ObjectThatIsConstructedOnLoading", build_with_initialiser, "unexpected output"),
])



def build_bound(*flags):
    return lambda at: (at.write("library.cpp", "int object = 1;"),
                       at.make("{cxx}", "-shared", "-fPIC", *flags, "-o", "library.so", "library.cpp"))


add("BoundCalls", ["{cmake}", "-DOUTPUT=FLAGS_1 +0x0+9", "-P", "{source}/tests/support/expect_output.cmake",
                   "--", "{objdump}", "-p", "{work}/library.so"], build_bound("-Wl,-z,now,-z,nodelete"), [
    ("LibraryThatIsBoundLater", build_bound("-Wl,-z,lazy,-z,nodelete"), "unexpected output"),
    ("LibraryThatIsUnloaded", build_bound("-Wl,-z,now"), "unexpected output"),
])

# A public header that compiles by itself, and damaged forms.
HEADER = "#pragma once\n#include <string>\nstd::string getName();\n"
HEADER_PROJECT = """cmake_minimum_required(VERSION 3.25)
project(headers LANGUAGES CXX)
add_library(library STATIC empty.cpp)
target_compile_features(library PUBLIC cxx_std_17)
target_sources(library PUBLIC FILE_SET HEADERS BASE_DIRS include FILES include/whole.h)
set_target_properties(library PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
"""


def make_header(at):
    at.write("include/whole.h", HEADER)
    at.write("empty.cpp", "")
    at.write("CMakeLists.txt", HEADER_PROJECT)
    at.make("{cmake}", "-S", ".", "-B", "build", "-G", "Ninja", "-DCMAKE_CXX_COMPILER={cxx}")


def append_include(name):
    return lambda at: at.append("include/whole.h", f"#include {name}\n")


add("HeaderAlone", ["{cmake}", "--build", "build", "--target", "all_verify_interface_header_sets"], make_header, [
    ("WithoutAnInclude", lambda at: at.replace("include/whole.h", "#include <string>\n", ""),
     "'string' in namespace 'std' does not name a type"),
    ("OfAFileThatIsGone", append_include('"moved_away.h"'), "moved_away.h: No such file"),
    ("OfAnUndeclaredType", lambda at: at.append("include/whole.h", "Undeclared get();\n"),
     "'Undeclared' does not name a type"),
])
add("HeaderReaches", ["{cmake}", "-DCXX={cxx}", "-DINCLUDES={openssl_include}", "-DFOLDERS={work}/include", "-P",
                      "{source}/tests/system/package/check_public_headers.cmake"],
    lambda at: at.write("include/whole.h", HEADER), [
    ("LibcryptoByAnotherHeader",
     lambda at: (at.write("include/on_the_way.h", "#include <openssl/opensslv.h>\n"),
                 append_include('"on_the_way.h"')(at)), r"include/whole\.h reaches \S*openssl/"),
    ("Zlib", append_include("<zlib.h>"), r"include/whole\.h reaches \S*/zlib\.h"),
    ("FolderWithoutHeaders", lambda at: at.remove("include/whole.h"), "there are no headers in"),
])

# The bill of materials. A program calls its real maker and then changes the result.
MAKE_SBOM = """#!/bin/sh
set -e
{source}/scripts/make-sbom "$1" "$2"
"""


def change_sbom(change):
    return lambda at: at.append("make-sbom", f"sed -i '{change}' \"$2\"\n")


add("BillOfMaterials", ["{python}", "{source}/tests/system/package/check_sbom.py", "{work}/make-sbom", "{build}",
                        "{work}/sarn.spdx.json"],
    lambda at: at.write("make-sbom", MAKE_SBOM.format(**at.values), 0o755), [
    ("ChecksumThatIsWrong", change_sbom('s/"checksumValue": "./"checksumValue": "x/'), r"AssertionError: \S+\.so"),
    ("PackageThatIsMissing", change_sbom('s/"name": "zlib"/"name": "another"/'), "AssertionError: .*another"),
    ("RelationToNoPackage", change_sbom('s/"relatedSpdxElement": "SPDXRef-zlib"/"relatedSpdxElement": "SPDXRef-none"/'),
     "AssertionError: .*SPDXRef-none"),
    ("AnotherDate", change_sbom('s/"created": "2023/"created": "2024/'), "the date is the one that was given"),
])

# A project that includes this one as a subdirectory.
PROJECT = """cmake_minimum_required(VERSION 3.16)
project(host LANGUAGES NONE)
include(globals.cmake)
remember_globals()
# taken in
compare_globals()
"""
add("ConsumerGlobals", ["{cmake}", "-S", ".", "-B", "build"],
    lambda at: (at.copy("tests/system/package/consumer/remember_globals.cmake"), at.write("CMakeLists.txt", PROJECT),
                at.write("globals.cmake", at.read("tests/system/package/consumer/remember_globals.cmake"))), [
    ("VariableThatChanges", lambda at: at.replace("CMakeLists.txt", "# taken in", "set(CMAKE_CXX_STANDARD 17)"),
     "CMAKE_CXX_STANDARD was '' and is '17'"),
    ("OptionOfTheFolder", lambda at: at.replace("CMakeLists.txt", "# taken in", "add_compile_options(-Wall)"),
     "COMPILE_OPTIONS was '' and is '-Wall'"),
    ("TargetForDevelopers", lambda at: at.replace("CMakeLists.txt", "# taken in", "add_custom_target(sarn_tests)"),
     "sarn_tests is built"),
])

# Small projects that print the line of the consumer.
PROGRAM = '#include <cstdio>\nint main() { std::puts("sarn 1.0 with OpenSSL 1.1"); }\n'


def make_consumer(at):
    at.write("consumer/main.cpp", PROGRAM)
    at.write("consumer/CMakeLists.txt", "cmake_minimum_required(VERSION 3.25)\nproject(consumer LANGUAGES CXX)\n"
             "add_executable(consumer main.cpp)\n")


def make_package(at):
    at.write("main.cpp", "#ifndef FOUND\n#error pkg-config gave no flags\n#endif\n" + PROGRAM)
    at.write("prefix/lib/pkgconfig/sarn.pc", "Name: sarn\nDescription: d\nVersion: 1.0\nCflags: -DFOUND\n")


def print_else(name):
    return lambda at: at.replace(name, "sarn 1.0", "sarn")


add("Consumer", ["{cmake}", "-DWORK_DIR={work}/build", "-DSOURCE_DIR={work}/consumer", "-DWAY=package",
                 "-DOPTIONS=-DCMAKE_CXX_COMPILER={cxx}", "-P", "{source}/tests/system/package/run_consumer.cmake"],
    make_consumer, [
    ("ThatDoesNotCompile", lambda at: at.append("consumer/main.cpp", "#error no\n"), "failed .*--build"),
    ("ThatFails", lambda at: at.replace("consumer/main.cpp", "; }", "; return 3; }"), r"failed \(3\)"),
    ("ThatPrintsSomethingElse", print_else("consumer/main.cpp"), "unexpected output"),
])
add("PkgConfig", ["{cmake}", "-DWORK_DIR={work}/build", "-DSOURCE={work}/main.cpp", "-DCXX={cxx}",
                  "-DPREFIX={work}/prefix", "-DPKG_CONFIG={pkg_config}", "-DSTATIC=", "-DLINK_FLAGS=", "-P",
                  "{source}/tests/system/package/run_pkg_config.cmake"], make_package, [
    ("OfAnOlderVersion", lambda at: at.replace("prefix/lib/pkgconfig/sarn.pc", "1.0", "0.9"), "required version is .>= 1.0"),
    ("WithoutFlags", lambda at: at.replace("prefix/lib/pkgconfig/sarn.pc", "-DFOUND", ""), "pkg-config gave no flags"),
    ("OfAProgramThatPrintsSomethingElse", print_else("main.cpp"), "unexpected output"),
])

# Another zlib. A script that logs the calls stands in for the tests of the digests.
ZLIB_PROJECT = """cmake_minimum_required(VERSION 3.25)
project(sarn LANGUAGES C)
find_package(ZLIB REQUIRED)
add_library(sarn SHARED a.c)
target_link_libraries(sarn ZLIB::ZLIB)
"""


def make_zlib(at):
    at.write("tests", "#!/bin/sh\nprintf 'adler32\\ncrc32\\n' >\"$SARN_TEST_ZLIB_LOG\"\n", 0o755)
    for name in ("stand_in.so", "headers/zlib.h", "headers/zconf.h", "project/a.c"):
        at.write(name, "")
    at.write("project/CMakeLists.txt", ZLIB_PROJECT)


add("ZlibStandIn", ["{cmake}", "-DTESTS={work}/tests", "-DLIBRARY={work}/stand_in.so", "-DHEADERS={work}/headers",
                    "-DSOURCE_DIR={work}/project", "-DWORK_DIR={work}/zlib", "-DLIBCRYPTO=", "-P",
                    "{source}/tests/system/package/run_zlib_stand_in.cmake"], make_zlib, [
    ("ThatChangesADigest", lambda at: at.append("tests", "exit 1\n"), "depend on which zlib computes them"),
    ("ThatIsNotCalled", lambda at: at.replace("tests", "adler32", "adler"), "the stand-in was not used"),
    ("ThatTheBuildDoesNotUse", lambda at: at.replace("project/CMakeLists.txt", "ZLIB::ZLIB", "z"),
     "ZLIB_ROOT was not taken"),
])
