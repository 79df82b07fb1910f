"""What can be read off the Windows programs as they are shipped: python3 programs_test.py BUILD SOURCE CASE"""
import bisect, re, struct, subprocess, sys, zlib
import xml.etree.ElementTree as xml

BUILD, SOURCE, CASE = sys.argv[1:]
VERSION = re.search(r"VERSION ([0-9.]+) LANG", open(f"{SOURCE}/CMakeLists.txt").read())[1]
NEXT = re.sub(r"[0-9]+$", "99", VERSION)
#             program                        bytes at most
PROGRAMS = {"ColdAnchorLauncher": 4_000_000, "ColdAnchorUpdateHelper": 500_000}
SYSTEM = {"advapi32", "kernel32", "msvcrt"}
DELAYED = {"bcrypt", "crypt32", "gdi32", "imm32", "ole32", "oleaut32", "setupapi", "shell32", "user32", "version",
           "winhttp", "winmm"}


def run(*command, **options):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, **options).stdout


def symbols(name):
    lines = run("x86_64-w64-mingw32-nm", f"{BUILD}/bin/{name}.debug").splitlines()
    return {line.split()[-1]: int(line.split()[0], 16) for line in lines if not line.startswith(" ")}


class Program:
    def __init__(self, path):
        self.data = data = open(path, "rb").read()
        pe = self.u32(60)
        assert data[pe:pe + 4] == b"PE\0\0"
        self.machine, count, _, _, self.symbol_count, length, self.flags = struct.unpack_from("<HHIIIHH", data, pe + 4)
        head = pe + 24
        self.base, self.subsystem, self.dll_flags = (
            struct.unpack_from("<Q", data, head + 24)[0], *struct.unpack_from("<HH", data, head + 68))
        self.directories = [struct.unpack_from("<II", data, head + 112 + 8 * i) for i in range(16)]
        self.sections = {}
        for i in range(count):
            name, virtual, address, size, at, *_, flags = struct.unpack_from("<8sIIIIIIHHI", data, head + length + 40 * i)
            self.sections[name.rstrip(b"\0").decode()] = (address, max(virtual, size), at, size, flags)

    def u32(self, at):
        return struct.unpack_from("<I", self.data, at)[0]

    def offset(self, address):
        return next(at + address - start for start, size, at, _, _ in self.sections.values() if start <= address < start + size)

    def imports(self):
        at, names = self.offset(self.directories[1][0]), set()
        while self.u32(at + 12):
            name = self.offset(self.u32(at + 12))
            names.add(self.data[name:self.data.index(b"\0", name)].decode().lower().removesuffix(".dll"))
            at += 20
        return names

    def resources(self, at=0):
        """{type: {name: {language: bytes}}}"""
        root = self.offset(self.directories[2][0])
        named, numbered = struct.unpack_from("<HH", self.data, root + at + 12)
        tree = {}
        for i in range(named + numbered):
            name, child = struct.unpack_from("<II", self.data, root + at + 16 + 8 * i)
            if child >> 31:
                tree[name] = self.resources(child & 0x7FFFFFFF)
            else:
                address, size = struct.unpack_from("<II", self.data, root + child)
                tree[name] = self.data[self.offset(address):][:size]
        return tree


def imports(program, name):
    assert program.subsystem == 2, "not a graphical program"
    assert program.imports() <= SYSTEM, program.imports()
    delayed = {m[1] for m in map(re.compile("__DELAY_IMPORT_DESCRIPTOR_lib(.*)_a$").match, symbols(name)) if m}
    assert delayed <= DELAYED, delayed
    assert ("winhttp" in delayed) == (name == "ColdAnchorLauncher"), delayed
    print(name, "names", *sorted(program.imports()), "and loads", *sorted(delayed))


def size(program, name):
    assert program.symbol_count == 0
    print(name, len(program.data), "bytes, at most", PROGRAMS[name])
    assert len(program.data) <= PROGRAMS[name]


def hardening(program, name):
    assert program.machine == 0x8664
    for flag in (0x20, 0x40, 0x100):  # high entropy, dynamic base, no execution of data
        assert program.dll_flags & flag, hex(flag)
    assert program.base >= 1 << 32
    assert not program.flags & 1 and program.directories[5][1] > 100, "relocations"
    executable = {section: flags for section, (*_, flags) in program.sections.items() if flags & 0x20000000}
    assert list(executable) == [".text"] and not executable[".text"] & 0x80000000, executable
    known = symbols(name)
    address, length, at, stored, _ = program.sections[".text"]
    target = known["__stack_chk_fail"] - program.base - address
    code = program.data[at:at + stored]
    functions = sorted((at - program.base - address, symbol) for symbol, at in known.items())
    begin = {symbol: at for at, symbol in functions}
    callers = [functions[bisect.bisect(functions, (m.start(), "~")) - 1][1] for m in re.finditer(rb"\xe8", code[:-4])
               if struct.unpack_from("<i", code, m.end())[0] + m.end() + 4 == target]
    ours = sum(caller.startswith("_ZN") and "2ca" in caller for caller in callers)
    print(name, "checks its stack in", len(callers), "places,", ours, "of them in the project's own functions")
    assert ours >= 3 and len(callers) > ours
    # Both ways by which a library is looked for name the system's folder: LOAD_LIBRARY_SEARCH_SYSTEM32.
    for function in ("__delayLoadHelper2", next(symbol for symbol in begin if "searchSystemFolderOnly" in symbol)):
        at = begin[function]
        end = next(start for start, _ in functions if start > at)
        assert code[at:end].count(struct.pack("<I", 0x800)) == 1, function


def resources(program, name, version=VERSION):
    tree = program.resources()
    [group] = tree[14].values()
    [group] = group.values()
    count = struct.unpack_from("<HHH", group)[2]
    sizes = []
    for i in range(count):
        width, height, *_, length, number = struct.unpack_from("<BBBBHHIH", group, 6 + 14 * i)
        [image] = tree[3][number].values()
        if image.startswith(b"\x89PNG"):
            shown = struct.unpack_from(">II", image, 16)
        else:
            shown = struct.unpack_from("<II", image, 4)
            shown = (shown[0], shown[1] // 2)  # a bitmap and its mask
        assert shown == (width or 256, height or 256) and length == len(image), (shown, width, height)
        sizes.append(shown[0])
    assert sizes == [16, 24, 32, 48, 64, 128, 256], sizes
    [[text]] = [language.values() for language in tree[16].values()]
    fields = text.decode("utf-16le", "replace").split("\0")
    for field, value in (("FileVersion", version), ("ProductVersion", version), ("OriginalFilename", name + ".exe")):
        place = next(i for i, text_before in enumerate(fields) if text_before.endswith(field))
        assert value in fields[place + 1:place + 3], field
    major, minor, patch = map(int, version.split("."))
    assert struct.unpack_from("<HHHH", text, 48) == (minor, major, 0, patch)
    [[manifest]] = [language.values() for language in tree[24].values()]
    found = {element.tag.split("}")[1]: (element.text or "").strip() or element.attrib for element in xml.fromstring(manifest).iter()}
    assert found["requestedExecutionLevel"] == {"level": "asInvoker", "uiAccess": "false"}
    assert found["supportedOS"] == {"Id": "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"}
    for setting, value in (("dpiAwareness", "PerMonitorV2, PerMonitor"), ("dpiAware", "true/pm"),
                           ("longPathAware", "true"), ("activeCodePage", "UTF-8")):
        assert found[setting] == value, setting


def debugging(program, name):
    """The program names its symbols, and they turn an address into a line."""
    link = program.data[program.data.rindex(name.encode() + b".debug\0"):]
    debug = open(f"{BUILD}/bin/{name}.debug", "rb").read()
    assert zlib.crc32(debug) == struct.unpack_from("<I", link, (len(name) + 7 + 3) // 4 * 4)[0]
    function, file = {"ColdAnchorLauncher": ("_ZN2ca3job12runUpdateJob", "src/job/update_job.cpp"),
                      "ColdAnchorUpdateHelper": ("_ZN2ca6helper13readArguments", "src/helper/arguments.cpp")}[name]
    address = next(at for symbol, at in symbols(name).items() if symbol.startswith(function))
    place = run("x86_64-w64-mingw32-addr2line", "-e", f"{BUILD}/bin/{name}.debug", hex(address)).strip()
    path, line = place.split(" ")[0].rsplit(":", 1)
    assert path == "/cold-anchor/" + file, path
    assert re.sub(r".*\d+", "", function) in open(f"{SOURCE}/{file}").readlines()[int(line) - 1]
    print(name, hex(address), place)


if __name__ == "__main__":
    for name in PROGRAMS:
        globals()[CASE](Program(f"{BUILD}/bin/{name}.exe"), name)
    if CASE == "resources":
        resources(Program(f"{BUILD}/bin/next/ColdAnchorLauncher.exe"), "ColdAnchorLauncher", NEXT)
