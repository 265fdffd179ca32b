// SPDX-License-Identifier: Apache-2.0
// The calls that the libraries make into others, counted and made to fail one at a time.
//
// The shared libraries stay as they ship: only their tables of imported addresses are changed, so that each call passes
// a replacement of the same type, which fails when its turn has come and else calls the function it stands for.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace sarn_test {

enum class CallKind { Allocation, Libcrypto, File };

/// What is known of an imported function that can fail.
struct ImportedCall {
    const char* name;
    CallKind kind;
    /// A failure that the library passes over on purpose: what it does then is right all the same.
    bool isIgnored;
    void* replacement;
    const ImportedCall** slot;
    /// The error number that comes with the failure; 0 if none does.
    int error = 0;
};

/// The functions that tests let fail.
const std::vector<ImportedCall>& getImportedCalls();

/// Whether an imported function of libcrypto, zlib or the C library has no way to tell of a failure.
bool cannotFail(const std::string& name);

/// Whether an imported function belongs to neither: those of the C++ runtime, of memory, of text and of threads.
bool isNoDependency(const std::string& name);

/// Puts the replacements in place, once. Returns the names of all functions that libul and libsarn import from other
/// libraries.
const std::vector<std::string>& installReplacements();

/// While it lives, lets calls of this thread fail. One at a time.
class Injection {
public:
    enum class Duration { Once, FromThenOn };

    /// From the `index`th call of a kind on, counted from 0.
    Injection(bool ofAllocations, int index, Duration duration);
    Injection(const Injection&) = delete;
    Injection& operator=(const Injection&) = delete;
    ~Injection();

    int getCallCount() const { return m_count; }
    bool hasHappened() const { return m_first != nullptr; }
    /// The call that failed first.
    const ImportedCall& getFirst() const { return *m_first; }
    /// Whether a failure was injected that must not pass unnoticed.
    bool mustBeNoticed() const { return m_mustBeNoticed; }

    /// Whether a call of the function called `name` has been let fail by the one that lives.
    static bool hasFailed(const std::string& name);

    /// For the replacements.
    static bool mustFail(const ImportedCall& call);

private:
    bool m_ofAllocations;
    int m_index;
    Duration m_duration;
    int m_count = 0;
    const ImportedCall* m_first = nullptr;
    std::set<std::string> m_failed;
    bool m_mustBeNoticed = false;
};

/// While it lives, files are read and written in small pieces, each call interrupted by a signal first.
class SmallPieces {
public:
    SmallPieces();
    SmallPieces(const SmallPieces&) = delete;
    SmallPieces& operator=(const SmallPieces&) = delete;
    ~SmallPieces();
    int getCallCount() const;
};

/// While it lives, remembers how files are made and flushed: "create" with the flags that matter, "flush file",
/// "rename", "flush folder".
class FileSteps {
public:
    FileSteps();
    FileSteps(const FileSteps&) = delete;
    FileSteps& operator=(const FileSteps&) = delete;
    ~FileSteps();
    std::vector<std::string> get() const;
};

/// While it lives, files seem to belong to another user, all but those that are made meanwhile.
class PretendedOwner {
public:
    explicit PretendedOwner(unsigned owner);
    PretendedOwner(const PretendedOwner&) = delete;
    PretendedOwner& operator=(const PretendedOwner&) = delete;
    ~PretendedOwner();
};

/// While it lives, something happens right before the libraries open a certain file. One at a time.
class BeforeOpening {
public:
    /// Before the `index`th opening of `file` from now on, counted from 0.
    BeforeOpening(std::string file, int index, std::function<void()> action);
    BeforeOpening(const BeforeOpening&) = delete;
    BeforeOpening& operator=(const BeforeOpening&) = delete;
    ~BeforeOpening();
    /// How often the file has been opened.
    int getCount() const { return m_count; }

    /// For the replacement.
    static void note(const char* file);

private:
    std::string m_file;
    int m_index;
    std::function<void()> m_action;
    int m_count = 0;
};

/// While it lives, the system tells another size of one file than it has.
class PretendedSize {
public:
    PretendedSize(const std::string& file, long long size);
    PretendedSize(const PretendedSize&) = delete;
    PretendedSize& operator=(const PretendedSize&) = delete;
    ~PretendedSize();
};

} // namespace sarn_test
