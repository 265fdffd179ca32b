// SPDX-License-Identifier: Apache-2.0
// Normalisation compared with Python's ntpath on generated texts. docs/paths.md lists the differences, which are
// applied to ntpath's results here.
#include "support/expect.h"

#include "ul/error.h"
#include "ul/path.h"

namespace sarn_test {

namespace {

bool isVerbatim(const std::string& text) {
    return text.compare(0, 4, "\\\\?\\") == 0;
}

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find_first_of("\\/", start)) != std::string::npos; start = end + 1)
        parts.push_back(text.substr(start, end - start));
    parts.push_back(text.substr(start));
    return parts;
}

/// The number of parts of a text that belong to its root, including the empty ones before a share.
std::size_t countRootParts(const std::string& text) {
    if (isVerbatim(text))
        return split(text)[3] == "UNC" ? 6 : 4;
    return text[1] == ':' ? 1 : 4;
}

/// Whether only ntpath accepts a text: it leads above the root, or has a name of only dots and spaces.
bool isRefused(const std::string& text) {
    const std::vector<std::string> parts = split(text);
    int depth = 0;
    for (std::size_t i = countRootParts(text); i < parts.size(); ++i) {
        if (parts[i] == "..") {
            if (--depth < 0)
                return true;
        } else if (!parts[i].empty() && parts[i] != ".") {
            if (!isVerbatim(text) && parts[i].find_first_not_of(". ") == std::string::npos)
                return true;
            ++depth;
        }
    }
    return false;
}

/// ntpath's result with an upper-case drive, a separator after a bare share, and without dots and spaces at the end
/// of names.
std::string adapt(const std::string& normalized) {
    const std::vector<std::string> parts = split(normalized);
    const std::size_t rootParts = countRootParts(normalized);
    std::string result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        std::string part = parts[i];
        if (i >= rootParts && !isVerbatim(normalized))
            part.erase(part.find_last_not_of(". ") + 1);
        result += (i > 0 ? "\\" : "") + part;
    }
    if (result[0] == 'c' && result[1] == ':')
        result[0] = 'C';
    return parts.size() == rootParts ? result + "\\" : result;
}

} // namespace

TEST(CWindowsPath, GeneratedTexts_AreNormalisedAsByNtpathExceptForDocumentedDifferences) {
    int taken = 0;
    int refused = 0;
    for (const Vector& vector : readVectors("paths.vec", {"text", "normalized"})) {
        const std::string text = toText(vector.getBytes("text"));
        const ul::String given = ul::String::fromUTF8(text.data(), text.size());
        if (isRefused(text)) {
            EXPECT_THROW(ul::CWindowsPath{given}, ul::CBadPathError) << text;
            ++refused;
        } else {
            EXPECT_EQ(ul::CWindowsPath(given).getString().toUTF8(), adapt(toText(vector.getBytes("normalized"))))
                << text;
            ++taken;
        }
    }
    EXPECT_EQ(taken + refused, 800);
    EXPECT_GT(taken, 400);
    EXPECT_GT(refused, 100);
}

} // namespace sarn_test
