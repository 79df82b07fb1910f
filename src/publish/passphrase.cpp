#include "publish/passphrase.h"

#include "publish/descriptor.h"
#include "publish/failure.h"

#include <cstdlib>
#include <fcntl.h>
#include <termios.h>

namespace ca::publish {

namespace {

constexpr std::size_t longestPassphrase = 1024; // what OpenSSL takes when it reads a key

// The controlling terminal without echo, whatever the program's streams are; as before when the object ends.
class SilentTerminal {
public:
    SilentTerminal() : terminal_(::open("/dev/tty", O_RDWR | O_CLOEXEC)) {
        if (!terminal_ || ::tcgetattr(terminal_.get(), &before_) != 0)
            return;
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        silenced_ = ::tcsetattr(terminal_.get(), TCSAFLUSH, &silent) == 0;
    }
    ~SilentTerminal() {
        if (silenced_)
            ::tcsetattr(terminal_.get(), TCSAFLUSH, &before_);
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

    explicit operator bool() const { return silenced_; }

    std::string ask(const std::string& question) const {
        writeAll(terminal_, question.data(), question.size(), "/dev/tty");
        std::string line;
        for (char c = 0; readSome(terminal_, &c, 1, "/dev/tty") == 1 && c != '\n';)
            line += c;
        writeAll(terminal_, "\n", 1, "/dev/tty");
        return line;
    }

private:
    Descriptor terminal_;
    termios before_{};
    bool silenced_ = false;
};

std::string required(std::string passphrase, const std::string& source) {
    if (passphrase.empty())
        throw Failure("the passphrase from " + source + " is empty");
    if (passphrase.size() > longestPassphrase)
        throw Failure("the passphrase from " + source + " is longer than 1024 bytes");
    return passphrase;
}

std::string passphrase(const std::filesystem::path& file, const std::filesystem::path& keyFile, bool isNew) {
    if (!file.empty()) {
        const std::string text = readWhole(file);
        return required(text.substr(0, text.find_first_of("\r\n")), file.string());
    }
    if (const char* value = std::getenv(passphraseVariable))
        return required(value, passphraseVariable);
    const SilentTerminal terminal;
    if (!terminal)
        throw Failure("no terminal to ask for the passphrase of " + keyFile.string() +
                      ": give --passphrase-file or set " + passphraseVariable);
    const std::string question = (isNew ? "New passphrase for " : "Passphrase of ") + keyFile.string() + ": ";
    std::string answer = required(terminal.ask(question), "the terminal");
    if (isNew && terminal.ask("Once more: ") != answer)
        throw Failure("the two passphrases differ: nothing was made");
    return answer;
}

} // namespace

std::string findPassphrase(const std::filesystem::path& file, const std::filesystem::path& keyFile) {
    return passphrase(file, keyFile, false);
}

std::string choosePassphrase(const std::filesystem::path& file, const std::filesystem::path& keyFile) {
    return passphrase(file, keyFile, true);
}

} // namespace ca::publish
