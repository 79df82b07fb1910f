#include "files/descriptor.h"
#include "files/path.h"
#include "last_error.h"

#include <cerrno>
#include <cstring>
#include <elf.h>
#include <fcntl.h>

namespace {

// What the host can run: ET_DYN is a program too, one that may be loaded at any address.
bool isProgram(const Elf64_Ehdr& header) {
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
           header.e_ident[EI_CLASS] == ELFCLASS64 &&
           (header.e_type == ET_EXEC || header.e_type == ET_DYN);
}

} // namespace

using namespace ca::win32;

BOOL GetBinaryTypeW(LPCWSTR path, LPDWORD kind) {
    const std::optional<std::string> name = toPath(path);
    if (!name) {
        return FALSE;
    }
    const Descriptor file(::open(name->c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) {
        return failOnPath(errno, *name);
    }
    // A file shorter than this header is no program.
    Elf64_Ehdr header{};
    const ssize_t count = ::read(file.get(), &header, sizeof(header));
    if (count != static_cast<ssize_t>(sizeof(header)) || !isProgram(header)) {
        return fail(ERROR_BAD_EXE_FORMAT);
    }
    *kind = SCS_64BIT_BINARY;
    return TRUE;
}
