// SPDX-License-Identifier: Apache-2.0
// A second process exchanges files at each step of an operation, that is, before each call that the library makes to
// the system. If the test belongs to root, that process belongs to another user, who owns the folder.
#include "failures/call_watch.h"
#include "failures/signed_file.h"

#include "ul/file.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sarn_test {

namespace {

namespace fs = std::filesystem;

constexpr unsigned nobody = 65534;
constexpr char signedText[] = "[a]\nwho=host\n";
constexpr char evilText[] = "[a]\nwho=evil\n";
constexpr char newText[] = "written by the caller\n";

struct Attack : Row {
    /// Changes the folder that has this path.
    std::function<void(const fs::path& folder)> run;
    /// Whether a file that is written can still get its name afterwards.
    bool leavesTheName = true;
};

/// Puts "new" in the place of a file.
void putInPlace(const fs::path& folder, const char* name) {
    fs::rename(folder / "new", folder / name);
}

void putLink(const fs::path& folder, const char* name) {
    fs::create_symlink("../outside/secret", folder / "new");
    putInPlace(folder, name);
}

const Attack attacks[] = {
    {{"AnotherFile"},
     [](const fs::path& folder) {
         std::ofstream(folder / "new") << evilText;
         ::chmod((folder / "new").c_str(), 06777);
         putInPlace(folder, "file");
     }},
    {{"Link"}, [](const fs::path& folder) { putLink(folder, "file"); }},
    {{"LinkInPlaceOfTheSignature"}, [](const fs::path& folder) { putLink(folder, "file.sig"); }},
    {{"FIFO"},
     [](const fs::path& folder) {
         ::mkfifo((folder / "new").c_str(), 0666);
         putInPlace(folder, "file");
     }},
    {{"Folder"},
     [](const fs::path& folder) {
         fs::remove(folder / "file");
         fs::create_directory(folder / "file");
     },
     false},
    {{"Nothing"}, [](const fs::path& folder) { fs::remove(folder / "file"); }},
    {{"OtherContent"}, [](const fs::path& folder) { std::ofstream(folder / "file") << evilText; }},
    {{"LongerContent"},
     [](const fs::path& folder) { std::ofstream(folder / "file", std::ios::app) << std::string(100000, 'x'); }},
    {{"LinkInPlaceOfTheFolder"},
     [](const fs::path& folder) {
         fs::rename(folder, folder.parent_path() / "moved");
         fs::create_directory_symlink("elsewhere", folder);
     }},
    {{"LinkInPlaceOfTheTemporaryFile"},
     [](const fs::path& folder) {
         for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
             if (entry.path().extension() == ".tmp")
                 return putLink(folder, entry.path().filename().c_str());
         }
     },
     false},
};

/// Runs an attack in a process of its own when it is asked.
class Attacker {
public:
    Attacker(const Attack& attack, const fs::path& folder) noexcept {
        EXPECT_EQ(::pipe(m_order) | ::pipe(m_answer), 0);
        m_child = ::fork();
        if (m_child != 0)
            return;
        char byte = 0;
        // Without an order it ends when the test closes its end of the pipe.
        ::close(m_order[1]);
        const bool isReady = ::geteuid() != 0 || (::setgid(nobody) == 0 && ::setuid(nobody) == 0);
        if (isReady && ::read(m_order[0], &byte, 1) == 1)
            attack.run(folder);
        ::_exit(::write(m_answer[1], &byte, 1) == 1 && isReady ? 0 : 1);
    }
    Attacker(const Attacker&) = delete;
    Attacker& operator=(const Attacker&) = delete;
    ~Attacker() {
        ::close(m_order[1]);
        int status = -1;
        EXPECT_EQ(::waitpid(m_child, &status, 0), m_child);
        EXPECT_EQ(status, 0) << "the attack itself failed";
        for (const int end : {m_order[0], m_answer[0], m_answer[1]})
            ::close(end);
    }

    void strike() {
        char byte = 0;
        EXPECT_EQ(::write(m_order[1], &byte, 1), 1);
        EXPECT_EQ(::read(m_answer[0], &byte, 1), 1);
        m_hasStruck = true;
    }
    bool hasStruck() const { return m_hasStruck; }

private:
    int m_order[2] = {};
    int m_answer[2] = {};
    pid_t m_child = -1;
    bool m_hasStruck = false;
};

/// A folder of the attacker with a signed file, beside a folder with a secret of the caller.
class Place {
public:
    Place() {
        fs::create_directory(m_root.getNative("outside"));
        fs::create_directory(m_root.getNative("elsewhere"));
        m_root.write("outside/secret", "secret");
        fs::permissions(m_root.getNative("outside/secret"), fs::perms::owner_read | fs::perms::owner_write);
        fs::create_directory(m_folder);
        static const SignedFile signedFile(signedText);
        for (const char* const name : {"file", "file.sig"})
            fs::copy_file(signedFile.folder.getNative(name), m_folder / name);
        if (::geteuid() == 0) {
            for (const fs::path& path : {m_root.getNative(), m_folder, m_folder / "file", m_folder / "file.sig"})
                EXPECT_EQ(::chown(path.c_str(), nobody, nobody), 0);
        }
    }

    const fs::path& getFolder() const { return m_folder; }
    ul::CWindowsPath getFile() const { return TempFolder::toPath(m_folder / "file"); }
    void expectSecretUntouched() const {
        EXPECT_EQ(m_root.read("outside/secret"), "secret");
        EXPECT_EQ(fs::status(m_root.getNative("outside/secret")).permissions(),
                  fs::perms::owner_read | fs::perms::owner_write);
    }

    /// Expects no temporary file, and nothing in a folder that the library has not opened.
    void expectNothingLeft(bool isOpened) const {
        EXPECT_TRUE(!isOpened || fs::is_empty(m_root.getNative("elsewhere")));
        for (const fs::directory_entry& entry : fs::directory_iterator(m_root.getNative(findFirst())))
            EXPECT_NE(entry.path().extension(), ".tmp") << entry.path();
    }

    /// Expects the caller's text in a file of the caller without rights for anyone else to become the caller.
    void expectWritten() const {
        struct stat status {};
        EXPECT_EQ(::lstat(m_root.getNative(findFirst() + "/file").c_str(), &status), 0);
        EXPECT_TRUE(S_ISREG(status.st_mode));
        EXPECT_EQ(status.st_uid, ::geteuid());
        EXPECT_EQ(status.st_mode & 07000U, 0U);
        EXPECT_EQ(m_root.read(findFirst() + "/file"), newText);
    }

private:
    /// The name of the folder that the library saw first.
    std::string findFirst() const { return fs::exists(m_root.getNative("moved")) ? "moved" : "folder"; }

    const TempFolder m_root;
    const fs::path m_folder = m_root.getNative("folder");
};

/// The error of an operation, or none, and what had happened before the attack.
struct Outcome {
    std::string error;
    /// The file or its folder was open.
    bool isOpened = false;
    /// The new file had its name.
    bool isNamed = false;
};

struct ExchangedAtEachStep : testing::TestWithParam<Attack> {
    /// Runs `action` once for each of its calls to the system, before which the attack happens, and then `check`.
    template <class Action, class Check>
    void attackEachStep(int leastSteps, Action action, Check check) const {
        int steps = 0;
        for (bool hasStruck = true; hasStruck && !HasFailure(); ++steps) {
            const Place place;
            Attacker attacker(GetParam(), place.getFolder());
            Outcome outcome;
            {
                CallWatch watch;
                watch.before("", [&, left = steps](const Call& call) mutable {
                    if (call.function->kind == CallKind::File && left-- == 0)
                        attacker.strike();
                });
                watch.after("open", [&](const Call&) { outcome.isOpened |= !attacker.hasStruck(); });
                watch.after("renameat", [&](const Call&) { outcome.isNamed |= !attacker.hasStruck(); });
                try {
                    action(place);
                } catch (const ul::CError& error) {
                    outcome.error = error.what();
                }
            }
            hasStruck = attacker.hasStruck();
            SCOPED_TRACE("step " + std::to_string(steps) + ": " + outcome.error);
            place.expectSecretUntouched();
            check(place, outcome);
        }
        EXPECT_GT(steps, leastSteps);
    }
};

} // namespace

TEST_P(ExchangedAtEachStep, ConfigurationThatIsLoaded_HasItsSignedValuesOrIsRefused) {
    for (const bool base64Encoded : {false, true}) {
        attackEachStep(
            base64Encoded ? 5 : 20,
            [base64Encoded](const Place& place) {
                sarn::CSignedConfig config(place.getFile(), readPublicKey("rsa1024"), base64Encoded);
                EXPECT_EQ(config.getValue("/a/who"), "host");
            },
            [](const Place&, const Outcome&) {});
    }
}

TEST_P(ExchangedAtEachStep, TextFileThatIsRead_IsReadOrRefusedWithoutWaiting) {
    attackEachStep(
        5, [](const Place& place) { ul::readUTF8TextFile(place.getFile()); }, [](const Place&, const Outcome&) {});
}

TEST_P(ExchangedAtEachStep, FileThatIsReplaced_HarmsNoOtherFileAndGivesNoRightsAway) {
    attackEachStep(
        8, [](const Place& place) { ul::writeUTF8TextFile(place.getFile(), newText); },
        [](const Place& place, const Outcome& outcome) {
            place.expectNothingLeft(outcome.isOpened);
            if (outcome.error.empty() && outcome.isOpened && !outcome.isNamed && GetParam().leavesTheName)
                place.expectWritten();
        });
}

INSTANTIATE_TEST_SUITE_P(By, ExchangedAtEachStep, testing::ValuesIn(attacks), getRowName<Attack>);

} // namespace sarn_test
