# SPDX-License-Identifier: Apache-2.0
"""Rules of the tree, and the lists of places in the sources."""
from case import add

LICENCE = "// SPDX-License-Identifier: Apache-2.0\n"
CODE = "int a() { return 1; }\n"


def make_tree(at):
    """The smallest tree that keeps all rules."""
    at.copy("scripts/check-tree", "scripts/mutate.py", "scripts/mutant_judges.py", "scripts/mutants.py",
            "scripts/coverage.py", "scripts/source_places.py")
    for name in ("src/a.cpp", "include/sarn/a.h", "ul/src/a.cpp", "ul/include/ul/a.h", "tests/a_test.cpp"):
        at.write(name, LICENCE + CODE)
    at.write("src/frame/openssl_owners.h", LICENCE + "void f() { BIO_free_all(a); }\n")
    at.write("tests/CMakeLists.txt", LICENCE.replace("//", "#") + "add_executable(tests a_test.cpp)\n")
    at.write("tests/data/kept_mutants.txt", "src/a.cpp: a: int a() { return 1; } => int a() { return 2; }  # why not\n")
    at.write("tests/data/uncovered.txt", "src/a.cpp: a: int a() { return 1; }  # why not\n")
    at.make("git", "init", "--quiet")


def write(name, text):
    return lambda at: at.write(name, LICENCE + text)


def append(name, text):
    return lambda at: at.append(name, text)


def raise_instructions(at):
    for figure in ("10", "20"):
        at.write("tests/data/instructions.txt", f"a call = {figure}\n")
        at.make("git", "add", "--all")
        at.make("git", "-c", "user.name=a", "-c", "user.email=a", "commit", "--quiet", "--message=Count")


add("Tree", ["sh", "-c", "git add --all && scripts/check-tree"], make_tree, [
    ("LibcryptoInAPublicHeader", write("include/sarn/b.h", "#include <openssl/evp.h>\n"), "only src/ includes libcrypto"),
    ("ZlibInTheBaseLibrary", write("ul/src/b.cpp", "#include <zlib.h>\n"), "only src/ includes libcrypto or zlib"),
    ("UpwardInclude", write("ul/src/b.cpp", '#include "sarn/cipher.h"\n'), "knows nothing of the library above it"),
    ("RiseOfInstructionsWithoutAReason", raise_instructions, "raises 'a call' from 10 to 20: say why"),
    ("WipeThatMayBeOptimisedAway", write("src/b.cpp", "void f(char* p) { memset(p, 0, 1); }\n"), "use ul::wipe"),
    ("ComparisonWhoseTimeDependsOnTheContent", write("src/b.cpp", "bool f() { return memcmp(a, b, 1); }\n"), "secrets are compared"),
    ("ComparisonInAHeader", write("include/sarn/b.h", "bool f() { return memcmp(a, b, 1); }\n"), "secrets are compared"),
    ("UnsafeCall", write("src/b.cpp", "void f() { strcpy(a, b); }\n"), "unsafe call"),
    ("ObjectByNew", write("src/b.cpp", "P<CA> f() { return new ul::CA(); }\n"), "objects are created by ul::make"),
    ("ByteOrderOfTheProcessor", write("src/b.cpp", "#if __BYTE_ORDER__ == 1\n#endif\n"), "the byte order of"),
    ("IntegerThatIsCopiedToMemory", write("src/b.cpp", "void f() { std::memcpy(a, &number, 4); }\n"), "the byte order of"),
    ("IntegerThatIsReadFromMemory", write("src/b.cpp", "int a = *reinterpret_cast<const int*>(b);\n"), "an integer in memory"),
    ("FreeOutsideOfTheOwners", write("src/b.cpp", "void f() { EVP_MD_CTX_free(a); }\n"), "freed by their owners"),
    ("FreeOfAChain", write("src/frame/b.h", "void f() { BIO_free_all(a); }\n"), "freed by their owners"),
    ("ClassWithoutItsPrefix", write("include/sarn/b.h", "class SARN_EXPORT Cipher {};\n"), "exported classes are C"),
    ("Tab", write("src/b.cpp", "\tint b;\n"), "tabs"),
    ("LinkWithoutItsPage", write("docs/b.md", "[there](#there)\n"), "a link within a page names the page"),
    ("WhiteSpaceAtTheEnd", write("src/b.cpp", "int b; \n"), "white space at the end of a line"),
    ("LongLineOfCMake", append("tests/CMakeLists.txt", "# " + "x" * 120 + "\n"), "more than 120 characters"),
    ("TestWhoseStatusIsIgnored", append("tests/CMakeLists.txt", "# PASS_REGULAR_EXPRESSION x\n"), "ignores the exit"),
    ("FileWithoutALicence", lambda at: at.write("src/b.cpp", CODE), r"src/b\.cpp has no SPDX line"),
    ("FileThatIsTooLong", write("src/b.cpp", "int b;\n" * 300), r"src/b\.cpp has 301 lines"),
    ("TestThatIsNotCompiled", write("tests/b_test.cpp", CODE), r"tests/b_test\.cpp is in no CMakeLists"),
    ("ExampleThatIsNotCompiled", write("examples/b.cpp", CODE), r"examples/b\.cpp is in no CMakeLists"),
    ("TooManyWaivers", write("src/b.cpp", "// NOLINTNEXTLINE(a)\n" * 11), "more than ten waivers"),
    ("KeptMutantThatIsGone", append("tests/data/kept_mutants.txt", "src/a.cpp: b: int b; => nothing  # why not\n"),
     "matches no place: src/a.cpp: b"),
    ("KeptMutantOfSeveralPlaces", append("src/a.cpp", CODE), r"matches 2 places, say which of them: src/a\.cpp: a"),
    ("KeptMutantWithoutAReason", append("tests/data/kept_mutants.txt", "src/a.cpp: a: 1 => 2\n"), "without a reason"),
    ("KeptMutantThatIsListedTwice", lambda at: at.append("tests/data/kept_mutants.txt",
                                                         at.read("tests/data/kept_mutants.txt")), "listed twice"),
    ("UncoveredConditionThatIsGone",
     append("tests/data/uncovered.txt", 'src/a.cpp: a: int b = c;: "c" never decides  # why not\n'),
     r"uncovered\.txt: matches no place: src/a\.cpp: a: int b = c"),
    ("UncoveredLineThatIsGone", append("tests/data/uncovered.txt", "src/a.cpp: a: int b;  # why not\n"),
     r"uncovered\.txt: matches no place: src/a\.cpp: a: int b;"),
])


def make_prose(at):
    """A page and a comment without a breach; code and quoted texts are not prose."""
    at.copy("scripts/check-prose")
    at.write("page.md", "# What every page has\n\nThere is no such key. `mend` is a name.\n\n    whoever = behind\n")
    at.write("a.cpp", LICENCE + "// Raises \"It is no key.\" for malformed input.\n"
             "const char* tells = \"behind\"; // a name\n")
    at.make("git", "init", "--quiet")


add("Prose", ["sh", "-c", "git add --all && scripts/check-prose"], make_prose, [
    ("NegatedNoun", append("page.md", "\nThis text is\nno key.\n"), r'page\.md:7: "is no": write "is not a"'),
    ("ClauseAsSubject", append("page.md", "\nA key is read. What cannot be parsed is refused.\n"),
     r"page\.md:7: .* start with a noun"),
    ("PersonWithoutANoun", append("page.md", "\nThe key goes to whoever asks.\n"), 'write "anyone who"'),
    ("PlaceForATime", append("a.cpp", "int b; // behind the IV\n"), r'a\.cpp:4: "behind": write "after"'),
    ("CommentOfAScript", lambda at: at.write("a.cmake", "# This mends the path.\n"),
     r'a\.cmake:1: "mends": write "fix"'),
    ("DocumentationOfPython", lambda at: at.write("a.py", '"""Counts.\n\nTells how many.\n"""\n'),
     r'a\.py:3: "Tells": write'),
    ("Misspelling", append("a.cpp", "// It is recieved.\n"), r"a\.cpp:4: misspelt: recieved ==> received"),
])


# The output of llvm-cov for a binary and a source of two lines. One line has a count, an assertion, and a condition that
# contains another branch.
REPORT = """{"data": [{"files": [{"filename": "{root}/src/a.cpp",
"segments": [[1, 1, 5, true, true, false], [2, 1, COUNT, true, true, false], [2, 22, 0, false, false, false]],
"branches": [[1, 1, 1, 5, 1, 1, 0, 0, 4], [2, 1, 2, 6, SIDES, 0, 0, 4], [2, 5, 2, 6, 1, 1, 0, 0, 4],
[2, 9, 2, 9, 5, 0, 0, 0, 4]],
"mcdc_records": [[2, 1, 2, 8, 0, 5, [true]], [2, 9, 2, 9, 0, 5, [false]]]}]}]}"""
# The same for a binary that does not use the function in the second line.
UNUSED = """{"data": [{"files": [{"filename": "{root}/src/a.cpp",
"segments": [[2, 1, 0, true, true, false], [2, 22, 0, false, false, false]], "branches": [], "mcdc_records": []}]}]}"""


def make_report(at):
    at.copy("scripts/coverage.py", "scripts/source_places.py")
    at.write("src/a.cpp", LICENCE + CODE)
    at.write("tests/data/uncovered.txt", "")
    at.write("report", REPORT.replace("{root}", str(at.folder)).replace("COUNT", "7").replace("SIDES", "3, 4"))
    at.write("unused", UNUSED.replace("{root}", str(at.folder)))


def list_as(fault):
    return append("tests/data/uncovered.txt", f'src/a.cpp: a: int a() {{ return 1; }}: "int a" {fault}  # why not\n')


add("Coverage", ["scripts/coverage.py", "report", "unused"], make_report, [
    ("LineThatNeverRan", lambda at: at.replace("report", "2, 1, 7, true", "2, 1, 0, true"),
     r"not covered: src/a\.cpp: a: int a\(\)"),
    ("ListedLineThatRan", append("tests/data/uncovered.txt", "src/a.cpp: a: int a() { return 1; }  # why not\n"),
     "listed, but covered or gone: matches no place"),
    ("BranchThatWentOneWay", lambda at: at.replace("report", "3, 4, 0", "3, 0, 0"),
     r'not covered: src/a\.cpp: a: .*: "int a" is never false'),
    ("ConditionThatNeverDecided", lambda at: at.replace("report", "true]", "false]"), '"int a" never decides'),
    ("ListedConditionThatDecided", list_as("never decides"), "listed, but covered or gone"),
    ("ListedBranchThatWentBothWays", list_as("is never true"), "listed, but covered or gone"),
    ("ReportsWithoutFiles", lambda at: [at.write(name, '{"data": [{"files": []}]}') for name in ("report", "unused")],
     "the reports contain no code"),
])
