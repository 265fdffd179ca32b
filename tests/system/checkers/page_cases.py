# SPDX-License-Identifier: Apache-2.0
"""Documentation, and data with figures."""
from case import add

# Documentation.
add("ErrorsPage", ["{python}", "{source}/tests/system/docs/check_errors.py", "{work}"],
    lambda at: at.copy("docs/errors.md", "src", "include", "ul"), [
    ("MessageThatNothingRaises",
     lambda at: at.append("docs/errors.md", '| `ul::CError` | "Cannot happen any more." | | never | wait |\n'),
     r"nothing raises: Cannot happen any more\."),
    ("MessageThatIsNotListed",
     lambda at: at.append("src/frame/raise.cpp", 'void fail() { sarn::raiseError("Something new failed."); }\n'),
     r"does not list: Something new failed\."),
    ("ArgumentErrorThatIsNotListed",
     lambda at: at.append("src/frame/raise.cpp", 'void f() { raiseInvalidArg("f", "invalid number of moons"); }\n'),
     "does not list: invalid number of moons"),
    ("MessageOfAConstantThatIsNotListed",
     lambda at: at.append("ul/src/errors/raise.cpp", 'constexpr char text[] = "Nobody knows this.";\n'),
     r"does not list: Nobody knows this\."),
    ("MessageThatIsLongerThanTheListedOne",
     lambda at: at.append("src/frame/raise.cpp", 'void f() { raiseInvalidArg("f", "invalid data size or so"); }\n'),
     "does not list: invalid data size or so"),
])
REGISTRIES = ["src", "include", "docs/ciphers.md", "docs/digests.md", "tests/support/cipher_test_data.h"]
CIPHERS, DIGESTS = "src/cipher/cipher_table.cpp", "src/digest/digest_manager.cpp"
add("PageRegistries", ["{python}", "{source}/tests/system/docs/check_registries.py", "{work}"],
    lambda at: at.copy(*REGISTRIES), [
    ("CipherThatIsNotListed", lambda at: at.replace("docs/ciphers.md", r"^\| `bfcbc`.*\n", ""),
     r"ciphers\.md: bfcbc is missing"),
    ("CipherThatIsGone", lambda at: at.replace(CIPHERS, r'^ *\{"bfcbc".*\n', ""), "bfcbc .* in the sources missing"),
    ("CipherOfAnotherClass", lambda at: at.replace("docs/ciphers.md", "`CCipher_Cast128CBC`", "`CCipher_BlowFishCBC`"),
     "cast128cbc is .*CCipher_BlowFishCBC.* in the sources .*CCipher_Cast128CBC"),
    ("CipherThatIsOffered", lambda at: at.replace(CIPHERS, "getBuiltInIDEA, true, false", "getBuiltInIDEA, true, true"),
     "ideacbc is .*'no'.* in the sources .*'yes'"),
    ("NullThatIsNotRegistered", lambda at: at.replace("src/cipher/cipher_manager.cpp", "^ *addCipher.*make.*\n", ""),
     "null is .* in the sources missing"),
    ("SizeOfAnotherKey", lambda at: at.replace("docs/ciphers.md", r"\| 32 \|", "| 24 |"), "aes256cbc is .*'24'.*'32'"),
    ("DigestThatIsNotListed", lambda at: at.replace("docs/digests.md", r"^\| `md4-sha1` .*\n", ""),
     r"digests\.md: md4-sha1 is missing"),
    ("DigestThatIsGone", lambda at: at.replace(DIGESTS, r"create<CDigestType_CRC32>,", ""),
     "crc32 is .* in the sources missing"),
    ("DigestOfAnotherName", lambda at: at.replace("src/digest/openssl_digest_types.cpp", '"sha256"', '"sha-256"'),
     "sha-256 is missing"),
    ("TableThatIsGone", lambda at: (at.write("docs/digests.md", ""), at.replace(DIGESTS, r"create<C[^;]*;", "};")),
     "0 digests"),
])
add("PageCode", ["{cmake}", "-DPAGE={work}/README.md", "-DROOT={work}", "-P", "{source}/tests/system/docs/check_page.cmake"],
    lambda at: at.copy("README.md", "examples"), [
    ("ThatDiffersFromTheProgram",
     lambda at: at.replace("examples/encrypt_text.cpp", "only copy", "copy"), "the code block differs"),
    ("WithoutTheNameOfItsFile",
     lambda at: at.append("README.md", "\n```cpp\nint main() {}\n```\n"), "of 2 code blocks 1 name their source"),
])
COMMANDS = "```console\n$ cat file\nkept\n```\n```pycon\n>>> open('file').read()\n'kept\\n'\n```\n"
add("PageCommands", ["{python}", "{source}/tests/system/recovery/check_commands.py", "page.md", "folder", "file"],
    lambda at: (at.write("file", "kept\n"), at.write("page.md", COMMANDS)), [
    ("WhoseOutputDiffers", lambda at: at.write("file", "changed\n"), "in line 1: cat file expected: kept got: changed"),
    ("ThatFail", lambda at: at.replace("page.md", "cat file\nkept", "false"), "in line 1: false expected: got: \\[1\\]"),
    ("ThatPrintWhatThePageDoesNotShow", lambda at: at.replace("page.md", "^kept\n", ""), "expected: got: kept"),
    ("OfPythonWhoseOutputDiffers", lambda at: at.replace("page.md", "'kept", "'lost"), "Expected: 'lost"),
    ("OfAnotherKind", lambda at: at.append("page.md", "```sh\nfalse\n```\n"), "in line 9: a block of the kind 'sh'"),
    ("ThatAreMissing", lambda at: at.write("page.md", "no commands\n"), "0 blocks"),
])
add("Pictures", ["{cmake}", "-DPYTHON={python}", "-DFOLDER={work}/docs/pictures", "-DWORK_DIR={work}/drawn", "-P",
                 "{source}/tests/system/docs/check_pictures.cmake"], lambda at: at.copy("docs/pictures"), [
    ("ThatWasChangedByHand", lambda at: at.append("docs/pictures/ciphertext.svg", "<!-- -->\n"), r"ciphertext\.svg is not what draw.py draws"),
    ("ThatIsNotDrawn", lambda at: at.write("docs/pictures/more.svg", "<svg/>\n"), "there are .*more.svg"),
    ("ThatIsMissing", lambda at: at.remove("docs/pictures/ciphertext.svg"), "drawn were .*ciphertext.svg"),
])


def make_site(at):
    at.write("site/index.html", '<a href="a.html#there">a</a><a href="#top">up</a><p id="top">')
    at.write("site/a.html", '<p id="there"><img src="a.png">')
    at.write("site/a.png", "")


add("SiteLinks", ["{python}", "{source}/docs/site/check-links", "{work}/site"], make_site, [
    ("ToAPageThatIsGone", lambda at: at.append("site/index.html", '<a href="b.html">'), r"in index\.html: b\.html"),
    ("ToAnAnchorThatIsGone", lambda at: at.replace("site/a.html", "there", "elsewhere"), r"index\.html: a\.html#there"),
    ("ToAPictureThatIsGone", lambda at: at.remove("site/a.png"), r"in a\.html: a\.png"),
])

# Figures of speed. The counting program prints given figures.
add("Instructions", ["{cmake}", "-DCOUNT=cat", "-DPROGRAM={work}/counted", "-DFIGURES={work}/figures", "-P",
                     "{source}/tests/system/instructions/check_instructions.cmake"],
    lambda at: (at.copy("tests/data/instructions.txt"), at.write("counted", at.read("tests/data/instructions.txt")),
                at.write("figures", at.read("tests/data/instructions.txt"))), [
    ("FigureThatIsTooLow", lambda at: at.replace("figures", "^decrypt 16 bytes = .*", "decrypt 16 bytes = 400"),
     r"'decrypt 16 bytes' takes \d+ instructions, \d+ more than the 400 before"),
    ("CallThatIsNotCounted", lambda at: at.replace("counted", "^find a cached key = .*", ""),
     "'find a cached key' was not counted"),
    ("FigureThatIsMissing", lambda at: at.replace("figures", "^encrypt 16 bytes = .*\n", ""),
     "13 calls were counted, but .*figures has 12"),
])

# Data of another build.
add("Exchange", ["{exchange}", "read", "bundle"], lambda at: at.make("{exchange}", "write", "bundle"), [
    ("ItemThatDiffers", lambda at: at.replace("bundle/exact.txt", "(base64/47/padding = )..", r"\g<1>00"),
     "base64/47/padding is wrong"),
    ("ItemThatIsMissing", lambda at: at.replace("bundle/exact.txt", "^hmac/1/sha1.*\n", ""), "missing item hmac/1/sha1"),
    ("BytesThatAreNotHexadecimal", lambda at: at.replace("bundle/random.txt", "= ..", "= 0x"), "not hexadecimal"),
    ("FolderThatIsEmpty", lambda at: (at.remove("bundle/exact.txt"), at.remove("bundle/random.txt")), "exact.txt"),
])
