#include "publisher/keys/passphrase.h"

#include "publisher/files/descriptor.h"
#include "publisher/text/failure.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sys/signalfd.h>
#include <termios.h>

namespace ca::publisher {

namespace {

constexpr std::size_t longestPassphrase = 1024; // what OpenSSL takes when it reads a key

// The controlling terminal without echo, whatever the program's streams are. As long as an object
// lives, the signals by which people end or stop a program wait; its end gives the terminal its
// echo back and then lets them have their way.
class SilentTerminal {
public:
    SilentTerminal() : terminal_(::open("/dev/tty", O_RDWR | O_CLOEXEC)) {
        sigset_t interrupts;
        ::sigemptyset(&interrupts);
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP}) {
            ::sigaddset(&interrupts, number);
        }
        ::sigprocmask(SIG_BLOCK, &interrupts, &maskBefore_);
        // The signals are only looked at here. They take effect when the destructor lets them.
        interrupt_ = Descriptor(::signalfd(-1, &interrupts, SFD_CLOEXEC));
        if (!interrupt_ || !terminal_ || ::tcgetattr(terminal_.get(), &before_) != 0) {
            return;
        }
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        // What was typed ahead was typed with echo, and is dropped.
        silenced_ = ::tcsetattr(terminal_.get(), TCSAFLUSH, &silent) == 0;
    }
    ~SilentTerminal() {
        if (silenced_) {
            ::tcsetattr(terminal_.get(), TCSAFLUSH, &before_);
        }
        ::sigprocmask(SIG_SETMASK, &maskBefore_, nullptr);
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

    explicit operator bool() const { return silenced_; }

    // Nothing if a signal came before the line's end.
    std::optional<std::string> ask(const std::string& question) const {
        writeAll(terminal_, question.data(), question.size(), "/dev/tty");
        std::optional<std::string> line = readLine();
        // Without echo the terminal hasn't shown the line's end either.
        writeAll(terminal_, "\n", 1, "/dev/tty");
        return line;
    }

private:
    std::optional<std::string> readLine() const {
        std::string line;
        for (;;) {
            if (waitForSignal()) {
                return std::nullopt;
            }
            char c = 0;
            const bool isEnd = readSome(terminal_, &c, 1, "/dev/tty") != 1 || c == '\n';
            if (isEnd) {
                return line;
            }
            line += c;
        }
    }

    // Until there is something to read, or a signal, which stays where it is. True for a signal.
    bool waitForSignal() const {
        std::array<pollfd, 2> sources{
            {{terminal_.get(), POLLIN, 0}, {interrupt_.get(), POLLIN, 0}}};
        while (::poll(sources.data(), sources.size(), -1) < 0) {
            if (errno != EINTR) {
                failWithReason("can't wait for the terminal");
            }
        }
        return sources[1].revents != 0;
    }

    Descriptor terminal_;
    Descriptor interrupt_;
    sigset_t maskBefore_{};
    termios before_{};
    bool silenced_ = false;
};

std::string required(std::string passphrase, const std::string& source) {
    if (passphrase.empty()) {
        throw Failure("the passphrase from " + source + " is empty");
    }
    if (passphrase.size() > longestPassphrase) {
        throw Failure("the passphrase from " + source + " is longer than 1024 bytes");
    }
    return passphrase;
}

std::string passphrase(const std::filesystem::path& file, const std::filesystem::path& keyFile,
                       bool isNew) {
    if (!file.empty()) {
        // One line, with the line end of either system.
        const std::string text = readWhole(file);
        return required(text.substr(0, text.find_first_of("\r\n")), file.string());
    }
    if (const char* value = std::getenv(passphraseVariable)) {
        return required(value, passphraseVariable);
    }
    const std::string question =
        (isNew ? "New passphrase for " : "Passphrase of ") + keyFile.string() + ": ";
    for (;;) { // who stops the program and comes back is asked anew
        const SilentTerminal terminal;
        if (!terminal) {
            throw Failure("no terminal to ask for the passphrase of " + keyFile.string() +
                          ": give --passphrase-file or set " + passphraseVariable);
        }
        const std::optional<std::string> typed = terminal.ask(question);
        const std::optional<std::string> repeated =
            typed && isNew ? terminal.ask("Once more: ") : typed;
        if (!repeated) {
            continue;
        }
        if (typed != repeated) {
            throw Failure("the two passphrases differ: nothing was made");
        }
        return required(*typed, "the terminal");
    }
}

} // namespace

std::string findPassphrase(const std::filesystem::path& file,
                           const std::filesystem::path& keyFile) {
    return passphrase(file, keyFile, false);
}

std::string choosePassphrase(const std::filesystem::path& file,
                             const std::filesystem::path& keyFile) {
    return passphrase(file, keyFile, true);
}

} // namespace ca::publisher
