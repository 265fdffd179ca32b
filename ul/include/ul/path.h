// SPDX-License-Identifier: Apache-2.0
/// \file
/// File paths with Windows rules, on every platform.
#pragma once

#include "ul/export.h"
#include "ul/string.h"

namespace ul {

/// What a path is made of on Windows. The rules hold on every platform, so that one text names one file everywhere.
///
/// Kinds of roots: a drive `C:\`, a share `\\server\share\`, and the verbatim forms `\\?\name\` and
/// `\\?\UNC\server\share\`, below which names are taken as they stand. All functions but normalizeSeparators() expect
/// text that went through it. Safe from any thread.
class UL_EXPORT CWindowsPathTraits {
public:
    /// The separator of a normalised path.
    static wchar_t getSep() noexcept { return L'\\'; }
    /// All characters that separate components in a text.
    static const wchar_t* getAllSeps() noexcept { return L"\\/"; }

    /// Whether `text` names its root in full. `C:a` and `\a` do not.
    static bool isAbsolute(const String& text);
    /// Length in characters of the root, whole or in part, at the start of `text`, with the separator behind it.
    static int getRootLength(const String& text);

    /// Turns every separator into getSep() and a run of them into one, except the two that start a share.
    static String normalizeSeparators(const String& text);
    /// The root with an upper-case drive letter and a separator at its end; empty if it names no place (a share without
    /// a name, the device root).
    static String normalizeRoot(const String& root);
    /// The component without the dots and spaces at its end; empty if nothing else was there.
    static String normalizeComponent(const String& component);
    /// Whether the components of `text` must go through normalizeComponent(): true but for the verbatim forms.
    static bool pathNeedsToBeNormalizedToBeValid(const String& text);
    /// Puts `text`, which is not absolute, below `workDirectory`, which is: `C:a` below it if it is on the same drive
    /// and below `C:\` if not, `\a` below its root.
    static String makeAbsolute(const String& text, const String& workDirectory);
    /// Takes away the separator at the end of a path, unless it ends the root.
    static String finalizeNormalizedPath(const String& path);
};

/// An absolute, normalised path of a file. Copies and comparisons are those of its text: no file is looked at.
///
/// Outside Windows the drive `Z:` stands for `/`. Owned by one thread at a time.
template <class Traits>
class TPathImpl {
public:
    /// Unifies separators, drops "." and empty components, lets ".." take away the component before it, and puts a
    /// relative text below getCurrentWorkDirectoryAsString().
    /// \throws CBadPathError with the text as given if it is empty, contains a null character, climbs above its root,
    ///         has a root that names no place, or a component of nothing but dots and spaces other than "." and "..".
    ///         CFileError if the working directory is needed and cannot be had.
    explicit TPathImpl(const String& text);

    /// The text of the path.
    const String& getString() const noexcept { return m_text; }

    /// Whether both texts are the same, case included.
    bool operator==(const TPathImpl& other) const noexcept { return m_text == other.m_text; }
    /// The opposite.
    bool operator!=(const TPathImpl& other) const noexcept { return m_text != other.m_text; }
    /// Ordinal order of the texts.
    bool operator<(const TPathImpl& other) const noexcept { return m_text < other.m_text; }

private:
    String m_text;
};

extern template class UL_EXPORT TPathImpl<CWindowsPathTraits>;

/// The path of every file operation.
using CWindowsPath = TPathImpl<CWindowsPathTraits>;

/// The process's working directory as the text of a path. Safe from any thread.
/// \throws CFileError if the operating system does not tell, or if the name has no form as a path.
UL_EXPORT String getCurrentWorkDirectoryAsString();

} // namespace ul
