# SPDX-License-Identifier: Apache-2.0
"""Commands that build the whole project. Here they build a small one."""
from case import add
from tree_cases import make_report

COMMANDS = ("abi", "memcheck", "reproduce", "test")
PROGRAMS = "ul_tests sarn_tests host_tests sarn_module_tests sarn_injection_tests sarn_soak sarn_fuzz_replay"

BUILD = """cmake_minimum_required(VERSION 3.25)
project(small LANGUAGES CXX)
foreach(library ul sarn)
  add_library(${library} SHARED library.cpp)
  target_include_directories(${library} PRIVATE include)
  install(TARGETS ${library})
endforeach()
foreach(program PROGRAMS)
  add_executable(${program} program.cpp)
  set_target_properties(${program} PROPERTIES RUNTIME_OUTPUT_DIRECTORY tests)
endforeach()
set_target_properties(sarn_fuzz_replay PROPERTIES RUNTIME_OUTPUT_DIRECTORY fuzz)
enable_testing()
add_test(NAME program COMMAND ul_tests)
""".replace("PROGRAMS", PROGRAMS)

PRESETS = """{"version": 6,
"configurePresets": [{"name": "release", "binaryDir": "build/release", "generator": "Ninja"},
    {"name": "packages", "inherits": "release", "binaryDir": "build/packages"},
    {"name": "asan", "inherits": "release", "binaryDir": "build/asan",
     "cacheVariables": {"CMAKE_CXX_FLAGS": "-fsanitize=address"}},
    {"name": "tsan", "inherits": "release", "binaryDir": "build/tsan",
     "cacheVariables": {"CMAKE_CXX_FLAGS": "-fsanitize=thread"}},
    {"name": "fuzz", "inherits": "release", "binaryDir": "build/fuzz"},
    {"name": "coverage", "inherits": "release", "binaryDir": "build/coverage"}],
"buildPresets": [{"name": "release", "configurePreset": "release"},
    {"name": "packages", "configurePreset": "packages"}, {"name": "asan", "configurePreset": "asan"},
    {"name": "tsan", "configurePreset": "tsan"}, {"name": "fuzz", "configurePreset": "fuzz"},
    {"name": "coverage", "configurePreset": "coverage"}],
"testPresets": [{"name": "release", "configurePreset": "release"},
    {"name": "asan", "configurePreset": "asan", "output": {"outputOnFailure": true}}]}
"""


def make_project(at):
    at.copy("scripts/lib.sh", "tests/leaks.valgrind", *(f"scripts/commands/{name}" for name in COMMANDS))
    at.write("scripts/build-libcrypto", "#!/bin/sh\n", 0o755)
    at.write("scripts/packages.txt", "[build]\ncmake\n[package]\ncmake\n[clang]\ncmake\n[coverage]\ncmake\n")
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


def run(*command):
    return ["env", "CXX={cxx}", f"scripts/commands/{command[0]}", *command[1:]]


def replace(name, pattern, replacement):
    return lambda at: at.replace(name, pattern, replacement)


def append(name, text):
    return lambda at: at.append(name, text)


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
RACE = """#include <thread>
int count = 0;
void work() { ++count; }
int main() {
    std::thread other(work);
    work();
    other.join();
}
"""
add("SanitizerLane", run("test", "asan"), make_project, [
    ("MemoryThatIsLost", replace("program.cpp", "^}", "static_cast<void>(*new volatile int(1)); }"),
     "FAILED .*LeakSanitizer|LeakSanitizer.* FAILED"),
])
add("ThreadLane", run("test", "tsan", "threads"), make_project, [
    ("DataRace", lambda at: at.write("program.cpp", RACE), "ThreadSanitizer: data race .*FAILED"),
])

# A project whose programs are copies of one script.
SCRIPTS = """cmake_minimum_required(VERSION 3.25)
project(small LANGUAGES NONE)
foreach(program PROGRAMS)
  add_custom_target(${program} ALL COMMAND "${CMAKE_COMMAND}" -E copy "${PROJECT_SOURCE_DIR}/program"
    "${PROJECT_BINARY_DIR}/tests/${program}")
endforeach()
add_custom_command(TARGET sarn_fuzz_replay POST_BUILD
  COMMAND "${CMAKE_COMMAND}" -E copy "${PROJECT_SOURCE_DIR}/program" "${PROJECT_BINARY_DIR}/fuzz/fuzz_target"
  COMMAND "${CMAKE_COMMAND}" -E copy "${PROJECT_SOURCE_DIR}/program" "${PROJECT_BINARY_DIR}/fuzz/sarn_fuzz_replay")
enable_testing()
add_test(NAME program COMMAND "${PROJECT_BINARY_DIR}/tests/ul_tests")
""".replace("PROGRAMS", PROGRAMS)
PROGRAM = """#!/bin/sh
for word; do
    case $word in
        --gtest_output=xml:*) cp results.xml "${word#*:}" ;;
        -max_total_time=*) echo "Done 7 runs in 1 second" ;;
        first-use | forks | ends | threads) echo "$word: none wrong" ;;
    esac
done
"""
RESULT = '<testcase name="EachAllocation/0" a="b"> <properties> <property name="injections" value="200"/>\n'


def make_scripts(at):
    make_project(at)
    make_report(at)
    at.copy("scripts/count_injections.py", *(f"scripts/commands/{name}" for name in ("faults", "fuzz", "secrets", "soak")))
    at.write("CMakeLists.txt", SCRIPTS)
    at.write("program", PROGRAM, 0o755)
    at.write("results.xml", RESULT * 60 + '<testcase name="AreGone/0"\n')
    at.write("fuzz/corpus/target.vec", "")
    at.write("fuzz/dictionary.txt", "")
    at.write("llvm-profdata-19", "#!/bin/sh\n", 0o755)
    at.write("llvm-cov-19", "#!/bin/sh\ncat report\n", 0o755)


def fail_on(word):
    """Makes the programs fail if their arguments contain a word."""
    return append("program", f"case $* in *{word}*) echo 'It is wrong.'; exit 1 ;; esac\n")


add("Suite", run("test"), make_scripts, [
    ("TestThatFails", append("program", "exit 1\n"), "program .*Failed.* FAILED"),
    ("TestThatIsSkipped",
     lambda at: (at.append("program", "exit 9\n"),
                 at.append("CMakeLists.txt", "set_tests_properties(program PROPERTIES SKIP_RETURN_CODE 9)\n")),
     "tests were skipped .*FAILED"),
    ("NoTest", replace("CMakeLists.txt", "^add_test.*", ""), "No tests were found.* FAILED"),
    ("OnlyTestsThatAreLeftOut",
     append("CMakeLists.txt", "set_tests_properties(program PROPERTIES LABELS before-release)\n"),
     "No tests were found.* FAILED"),
])
add("Faults", run("faults"), make_scripts, [
    ("TestThatFails", append("program", "exit 1\n"), "FAILED"),
    ("FilterThatMatchesNoTest", lambda at: at.write("results.xml", ""), "no test of sarn_injection_tests matches"),
    ("FewerFailures", lambda at: at.write("results.xml", RESULT.replace("200", "20") * 60), r"FAILED .*: 1200 failed"),
    ("FewerScenarios", lambda at: at.write("results.xml", RESULT.replace("200", "20000")), r"FAILED .* in 1 scenarios"),
])
add("Secrets", run("secrets"), make_scripts, [
    ("SecretThatStays", append("program", "exit 1\n"), "FAILED"),
    ("FilterThatMatchesNoTest", lambda at: at.write("results.xml", ""), "no test of sarn_injection_tests matches"),
    ("TestsThatUseNoSecret", lambda at: at.write("results.xml", RESULT), "FAILED .*: no test uses a secret"),
])
add("Soak", run("soak"), make_scripts, [
    (name, fail_on(word), "FAILED") for name, word in
    (("WrongResult", "threads"), ("ForkThatHangs", "forks"), ("WrongFirstUse", "first-use"), ("AbnormalEnd", "ends"))])
add("Fuzz", ["sh", "-c", "PATH=.:$PATH scripts/commands/fuzz 1"], make_scripts, [
    ("ReachThatIsNotMeasured", append("llvm-cov-19", "exit 1\n"), "FAILED"),
    ("ReachOfNoCode", lambda at: at.write("report", '{"data": [{"files": []}]}'), "reports contain no code .*FAILED"),
    ("TargetThatFails", replace("program", "echo .Done.*;;", "exit 1 ;;"), "target: stopped.* FAILED"),
    ("NoTarget", lambda at: at.remove("fuzz/corpus/target.vec"), "FAILED .*: there are no targets"),
])

# A small library, with programs in place of the tests. They call its function.
CASES = """import subprocess, sys
if sys.argv[1] == "--list":
    print("Case")
else:
    sys.exit(subprocess.run([sys.argv[-1]]).returncode)
"""


def make_mutated(at):
    make_project(at)
    at.copy("scripts/mutate.py", "scripts/mutant_judges.py", "scripts/mutants.py", "scripts/source_places.py")
    at.replace("CMakeLists.txt", "library.cpp", "src/library.cpp")
    at.append("CMakeLists.txt", "add_executable(sarn_command program.cpp)\n"
              "set_target_properties(sarn_command PROPERTIES OUTPUT_NAME sarn RUNTIME_OUTPUT_DIRECTORY tools)\n"
              "get_property(all DIRECTORY PROPERTY BUILDSYSTEM_TARGETS)\nforeach(target IN LISTS all)\n"
              "  if(NOT target MATCHES \"^(ul|sarn)$\")\n    target_link_libraries(${target} ul)\n  endif()\nendforeach()\n")
    at.write("src/library.cpp", "int add(int a) {\n    return a + 1;\n}\n")
    at.write("program.cpp", "int add(int a);\nint main() {\n    return add(2) == 3 ? 0 : 1;\n}\n")
    at.write("tests/system/command/run_case.py", CASES)
    at.write("tests/data/kept_mutants.txt", "")
    at.make("git", "add", "--all")


add("Mutate", ["{python}", "scripts/mutate.py", "9", "{work}/mutants", "--jobs=1", "--critical"], make_mutated, [
    ("Survivor", lambda at: at.replace("program.cpp", "add.2. == 3", "add(2) > 2"),
     r"survived: src/library.cpp: add: return a \+ 1; => .*1 of 2 random mutants detected \(seed \d+; 50\.0 %"),
    ("SurvivorAfterAHeader",
     lambda at: (at.write("include/one.h", "inline int getOne() {\n    return 1;\n}\n"),
                 at.replace("CMakeLists.txt", "add_executable.sarn_command", "include_directories(include)\n\\g<0>"),
                 at.replace("program.cpp", "int add", '#include "one.h"\n\\g<0>'),
                 at.replace("program.cpp", "add.2. == 3", "getOne() == 1 && add(2) > 2"),
                 at.make("git", "add", "--all")),
     r"survived: src/library.cpp: add: return a \+ 1; => .*2 of 3 random mutants detected"),
    ("TestThatFailsAnyway", lambda at: at.replace("program.cpp", "3 .", "4 ?"), "without a mutant tests/ul_tests.* fails"),
    ("NothingToChange", lambda at: at.write("src/library.cpp", "int add(int a);\n"), "0 of 0"),
])


def make_stopped(at):
    make_mutated(at)
    at.write("mutants/seed", "7")
    at.write("mutants/results.txt", "1 s\tNone\tsrc/library.cpp: add: return a + 1; => return a - 1;\n")


add("MutateContinued", ["{python}", "scripts/mutate.py", "9", "{work}/mutants", "--jobs=1", "--continue"], make_stopped, [
    ("SurvivorAsBefore", replace("program.cpp", "add.2. == 3", "add(2) > 0"), r"0 of 2 random mutants detected .seed 7"),
    ("DetectedBefore", lambda at: (at.replace("mutants/results.txt", "None", "case"),
                                   at.replace("program.cpp", "add.2. == 3", "add(2) > 0")), "1 of 2 random mutants detected"),
])

# Sources without a fault, and the checks of the tree as scripts of their own.
DEBUG = """{"version": 6, "configurePresets": [{"name": "debug", "binaryDir": "build/debug", "generator": "Ninja",
"cacheVariables": {"CMAKE_EXPORT_COMPILE_COMMANDS": "ON"}}]}
"""
LINTED = "int add(int a);\nint add(int a) {\n    return a;\n}\n"


def make_linted(at):
    make_project(at)
    at.copy("dev", "scripts/commands/lint", ".clang-format", ".clang-tidy")
    at.append("scripts/packages.txt", "[lint]\ncmake\n")
    for name in ("scripts/check-tree", "scripts/check-prose", ".ci/run", "docs/site/make", "scripts/step.sh"):
        at.write(name, "#!/usr/bin/env bash\n", 0o755)
    at.write("CMakePresets.json", DEBUG)
    at.write(".gitignore", "build/\n")
    for name in ("src/a.cpp", "ul/src/a.cpp"):
        at.write(name, LINTED)
    for name in ("library.cpp", "program.cpp", "include/pair.h"):
        at.write(name, "")
    at.replace("CMakeLists.txt", "library.cpp", "src/a.cpp")
    at.make("git", "add", "--all")


add("Lint", run("lint"), make_linted, [
    ("Format", append("src/a.cpp", "int  b();\n"), r"src/a\.cpp:\d+:\d+: error: code should be clang-formatted"),
    ("Script", append("scripts/step.sh", "echo $1\n"), "SC2086"),
    ("RuleOfTheTree", append("scripts/check-tree", "exit 1\n"), "FAILED"),
    ("Prose", append("scripts/check-prose", "exit 1\n"), "FAILED"),
    ("ClangTidy", append("src/a.cpp", "char* find();\nchar* find() {\n    return 0;\n}\n"), "modernize-use-nullptr"),
    ("Cppcheck", append("src/a.cpp", "int get(int a);\nint get(int a) {\n    const int b = 8 / a;\n    if (a == 0)\n"
                        "        return 1;\n    return b;\n}\n"), "zerodivcond"),
])
