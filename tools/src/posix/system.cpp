// SPDX-License-Identifier: Apache-2.0
#include "system.h"

#include "status.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <iterator>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace tool {

namespace {

volatile std::sig_atomic_t interruptedBy = 0;

// Becomes readable with an interrupt, so that one which arrives just before a call still ends the wait.
int interruptPipe[2] = {-1, -1};

void noteInterrupt(int number) {
    const int error = errno;
    interruptedBy = number;
    [[maybe_unused]] const ssize_t ignored = write(interruptPipe[1], "", 1);
    errno = error;
}

/// Whether a call was interrupted by something else, for example because the process was stopped for a while.
bool mustRepeat(ssize_t result) {
    return result == -1 && errno == EINTR && interruptedBy == 0;
}

/// Waits until there is something to read. Returns false if there is an interrupt.
bool waitForInput(int descriptor) {
    pollfd waiting[] = {{descriptor, POLLIN, 0}, {interruptPipe[0], POLLIN, 0}};
    int result = 0;
    do
        result = poll(waiting, std::size(waiting), -1);
    while (mustRepeat(result));
    return result != -1 && waiting[1].revents == 0;
}

/// Closed standard streams would get the descriptors of files that are opened later. What takes their place fails.
void occupyClosedStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) == -1)
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

/// A terminal without echo.
class HiddenTerminal {
public:
    HiddenTerminal() : m_descriptor(open("/dev/tty", O_RDWR | O_CLOEXEC)) {
        const bool isTerminal = tcgetattr(m_descriptor, &m_settings) == 0;
        termios hidden = m_settings;
        hidden.c_lflag = (hidden.c_lflag & ~static_cast<tcflag_t>(ECHO)) | ECHONL | ICANON;
        m_isHidden = isTerminal && tcsetattr(m_descriptor, TCSAFLUSH, &hidden) == 0;
    }
    HiddenTerminal(const HiddenTerminal&) = delete;
    HiddenTerminal& operator=(const HiddenTerminal&) = delete;
    ~HiddenTerminal() {
        if (m_isHidden)
            tcsetattr(m_descriptor, TCSAFLUSH, &m_settings);
        close(m_descriptor);
    }
    bool isHidden() const { return m_isHidden; }
    int getDescriptor() const { return m_descriptor; }

private:
    int m_descriptor;
    termios m_settings{};
    bool m_isHidden = false;
};

} // namespace

void prepareProcess() {
    occupyClosedStreams();
    [[maybe_unused]] const int ignored = pipe2(interruptPipe, O_CLOEXEC);
    // These become errors of write(), so that temporary files are removed.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    struct sigaction action = {};
    action.sa_handler = noteInterrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND); // the second one ends the process; calls are not restarted
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction present = {};
        if (sigaction(number, nullptr, &present) == 0 && present.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
}

void throwIfInterrupted() {
    if (interruptedBy != 0)
        throw Interrupted();
}

int endByInterrupt() {
    const int number = interruptedBy;
    std::signal(number, SIG_DFL);
    std::raise(number);
    return 128 + number;
}

std::filesystem::path getPath(const std::string& name) {
    return name;
}

int openToRead(const std::filesystem::path& path) {
    return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
}

int readSome(int descriptor, void* data, int size) {
    ssize_t count = -1;
    do
        count = waitForInput(descriptor) ? read(descriptor, data, static_cast<std::size_t>(size)) : -1;
    while (mustRepeat(count));
    return static_cast<int>(count);
}

int writeSome(int descriptor, const void* data, int size) {
    ssize_t count = -1;
    do
        count = write(descriptor, data, static_cast<std::size_t>(size));
    while (mustRepeat(count));
    return static_cast<int>(count);
}

int closeFile(int descriptor) {
    return close(descriptor);
}

bool isTerminal(int descriptor) {
    return isatty(descriptor) != 0;
}

int createFile(const std::filesystem::path& path, unsigned permissions) {
    return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, static_cast<mode_t>(permissions));
}

std::int64_t getRegularRest(int descriptor) {
    struct stat status = {};
    const bool isRegular = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    return isRegular ? std::max<std::int64_t>(status.st_size - lseek(descriptor, 0, SEEK_CUR), 0) : -1;
}

bool seek(int descriptor, std::int64_t position) {
    return lseek(descriptor, position, SEEK_SET) == position;
}

int flush(int descriptor) {
    return fsync(descriptor);
}

std::error_code renameToFree(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (link(from.c_str(), to.c_str()) == 0) {
        unlink(from.c_str());
        return {};
    }
    std::error_code error(errno, std::generic_category());
    // Some file systems have no links.
    if (error != std::errc::file_exists && !exists(symlink_status(to)))
        rename(from, to, error);
    return error;
}

ul::TCryptBuffer<char> readHiddenLine(const std::string& prompt) {
    const HiddenTerminal terminal;
    if (!terminal.isHidden())
        throw Problem(Misuse, "there is no terminal to ask for a secret: name its file or descriptor");
    if (write(terminal.getDescriptor(), prompt.data(), prompt.size()) == -1)
        throw Problem(Failed, "cannot write to the terminal");
    ul::TCryptBuffer<char> line;
    char character = 0;
    while (readSome(terminal.getDescriptor(), &character, 1) == 1 && character != '\n')
        line.insert(line.getUsed(), &character, 1);
    throwIfInterrupted();
    return line;
}

} // namespace tool
