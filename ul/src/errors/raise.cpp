// SPDX-License-Identifier: Apache-2.0
#include "errors/raise.h"

#include "text/utf8_text.h"

#include <string>
#include <system_error>

namespace ul {

void raiseError(const String& message, const CProps& props) {
    throw CError(message, "", -1, props, nullptr);
}

void raiseInvalidArg(const String& where, const String& message) {
    throw CInvalidArgError(where, message, CProps());
}

void raiseFileError(const String& operation, const String& path, int code) {
    throw CFileError(operation, path, describeSystemError(code), code);
}

void raiseFileError(const String& operation, const String& path, const String& reason) {
    throw CFileError(operation, path, reason, -1);
}

String describeSystemError(int code) {
    // The text is in the language and encoding of the host's locale.
    std::string text = std::system_category().message(code);
    text.erase(text.find_last_not_of(". \r\n") + 1);
    return decodeUTF8OrLatin1(text);
}

} // namespace ul
