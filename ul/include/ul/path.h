// SPDX-License-Identifier: Apache-2.0
/// \file
/// File paths with Windows rules, on every platform.
#pragma once

#include "ul/export.h"
#include "ul/string.h"

namespace ul {

/// The syntax of Windows paths. It is the same on every platform, so that one text names one file everywhere.
///
/// A root is a drive `C:\`, a share `\\server\share\`, or one of the verbatim forms `\\?\name\` and
/// `\\?\UNC\server\share\`, below which names are kept unchanged. Requires, for all functions but
/// normalizeSeparators(): the text went through normalizeSeparators(). Safe from any thread.
class UL_EXPORT CWindowsPathTraits {
public:
    /// The separator in a normalised path.
    static wchar_t getSep() noexcept { return L'\\'; }
    /// All characters that separate components.
    static const wchar_t* getAllSeps() noexcept { return L"\\/"; }

    /// Whether `text` starts with a complete root. `C:a` and `\a` do not.
    static bool isAbsolute(const String& text);
    /// Length in characters of the root, complete or partial, at the start of `text`, with the separator that follows
    /// it.
    static int getRootLength(const String& text);

    /// Turns every separator into getSep() and merges runs of them, except the two that start a share.
    static String normalizeSeparators(const String& text);
    /// The root with an upper-case drive letter and a separator at its end; empty for an incomplete root (a share
    /// without a name, the device root).
    static String normalizeRoot(const String& root);
    /// The component without trailing dots and spaces; empty if it consists of nothing else.
    static String normalizeComponent(const String& component);
    /// Whether the components of `text` must go through normalizeComponent(): false for the verbatim forms only.
    static bool pathNeedsToBeNormalizedToBeValid(const String& text);
    /// Resolves `text`, which is not absolute, against `workDirectory`, which is. `C:a` goes below `workDirectory` if
    /// that is on the same drive and below `C:\` if not; `\a` goes below the root of `workDirectory`.
    static String makeAbsolute(const String& text, const String& workDirectory);
    /// Removes the separator at the end of a path, unless it ends the root.
    static String finalizeNormalizedPath(const String& path);
};

/// An absolute, normalised path of a file. Copying and comparing use the text only: neither touches the file system.
///
/// Outside Windows the drive `Z:` stands for `/`. Owned by one thread at a time.
template <class Traits>
class TPathImpl {
public:
    /// Unifies separators, drops "." and empty components, lets ".." remove the component before it, and resolves a
    /// relative text against getCurrentWorkDirectoryAsString().
    /// \throws CBadPathError with the text as given if it is empty, contains a null character, climbs above its root,
    ///         has an incomplete root, or has a component of dots and spaces other than "." and ".." without
    ///         being verbatim; CFileError if the working directory is needed and not available.
    explicit TPathImpl(const String& text);

    /// The text of the path.
    const String& getString() const noexcept { return m_text; }

    /// Whether both texts are equal, case included.
    bool operator==(const TPathImpl& other) const noexcept { return m_text == other.m_text; }
    /// Negation of operator==.
    bool operator!=(const TPathImpl& other) const noexcept { return m_text != other.m_text; }
    /// Ordinal order of the texts.
    bool operator<(const TPathImpl& other) const noexcept { return m_text < other.m_text; }

private:
    String m_text;
};

// See buffer.h.
#if !defined(__MINGW32__) || defined(UL_BUILDING_LIBRARY)
extern template class UL_EXPORT TPathImpl<CWindowsPathTraits>;
#endif

/// The path type of all file operations.
using CWindowsPath = TPathImpl<CWindowsPathTraits>;

/// The working directory of the process, as the text of a path. Safe from any thread.
/// \throws CFileError if the operating system cannot report it, or if its name cannot be written as a path.
UL_EXPORT String getCurrentWorkDirectoryAsString();

} // namespace ul
