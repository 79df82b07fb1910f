#!/usr/bin/python3
"""What can be read off the Windows programs as they are shipped: programs_test.py BUILD SOURCE CASE

Runs by the system's own Python, for which Debian packages pefile.
"""
import glob, re, subprocess, sys, tempfile, zlib
import xml.etree.ElementTree as xml

import pefile

BUILD, SOURCE, CASE = sys.argv[1:]
VERSION = re.search(r"VERSION ([0-9.]+) LANG", open(f"{SOURCE}/CMakeLists.txt").read())[1]
NEXT = re.sub(r"[0-9]+$", "99", VERSION)
#             program                        bytes at most
PROGRAMS = {"ColdAnchorLauncher": 4_000_000, "ColdAnchorUpdateHelper": 500_000}
SYSTEM = {"advapi32", "kernel32", "msvcrt"}
DELAYED = {"bcrypt", "crypt32", "gdi32", "imm32", "ole32", "oleaut32", "setupapi", "shell32", "user32", "version",
           "winhttp", "winmm"}


def run(*command):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout


def symbols(name):
    """{symbol: address}"""
    lines = run("x86_64-w64-mingw32-nm", "--defined-only", f"{BUILD}/bin/{name}.debug").splitlines()
    return {symbol: address for address, _, symbol in map(str.split, lines)}


def imports(program, name):
    assert program.OPTIONAL_HEADER.Subsystem == 2, "not a graphical program"
    named = {entry.dll.decode().lower().removesuffix(".dll") for entry in program.DIRECTORY_ENTRY_IMPORT}
    assert named <= SYSTEM, named
    delayed = {m[1] for m in map(re.compile("__DELAY_IMPORT_DESCRIPTOR_lib(.*)_a$").match, symbols(name)) if m}
    assert delayed <= DELAYED, delayed
    assert ("winhttp" in delayed) == (name == "ColdAnchorLauncher"), delayed


def size(program, name):
    assert program.FILE_HEADER.NumberOfSymbols == 0
    print(name, len(program.__data__), "bytes, at most", PROGRAMS[name])
    assert len(program.__data__) <= PROGRAMS[name]


def hardening(program, name):
    optional = program.OPTIONAL_HEADER
    assert program.is_exe() and program.FILE_HEADER.Machine == 0x8664
    for flag in ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"):
        assert getattr(optional, "IMAGE_DLLCHARACTERISTICS_" + flag), flag
    assert optional.ImageBase >= 1 << 32
    assert not program.FILE_HEADER.IMAGE_FILE_RELOCS_STRIPPED and program.DIRECTORY_ENTRY_BASERELOC, "relocations"
    executable = {section.Name.rstrip(b"\0"): section.IMAGE_SCN_MEM_WRITE
                  for section in program.sections if section.IMAGE_SCN_MEM_EXECUTE}
    assert executable == {b".text": False}, executable
    assert any("searchSystemFolderOnly" in symbol for symbol in symbols(name)), "libraries from any folder"
    assert "SDL_DYNAPI_entry" not in symbols(name), "the environment can name another SDL"
    checked = run("x86_64-w64-mingw32-nm", *glob.glob(f"{BUILD}/src/libca_*.a")).count("U __stack_chk_fail")
    assert checked >= 20


def resources(program, name, version=VERSION):
    with tempfile.NamedTemporaryFile() as icon:
        run("wrestool", "-x", "-t14", "-o", icon.name, program.file)
        sizes = re.findall(r"--icon .*--width=(\d+) --height=\1 ", run("icotool", "-l", icon.name))
    assert sizes == "16 24 32 48 64 128 256".split(), sizes
    [text] = [table.entries for info in program.FileInfo[0] if info.Key == b"StringFileInfo" for table in info.StringTable]
    for field, value in (("FileVersion", version), ("ProductVersion", version), ("OriginalFilename", name + ".exe")):
        assert text[field.encode()].decode() == value, field
    major, minor, patch = map(int, version.split("."))
    [fixed] = program.VS_FIXEDFILEINFO
    assert (fixed.FileVersionMS, fixed.FileVersionLS) == (major << 16 | minor, patch << 16)
    manifest = run("wrestool", "-x", "--raw", "-t24", program.file)
    found = {element.tag.split("}")[1]: (element.text or "").strip() or element.attrib
             for element in xml.fromstring(manifest).iter()}
    assert found["requestedExecutionLevel"] == {"level": "asInvoker", "uiAccess": "false"}
    assert found["supportedOS"] == {"Id": "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"}
    for setting, value in (("dpiAwareness", "PerMonitorV2, PerMonitor"), ("dpiAware", "true/pm"),
                           ("longPathAware", "true"), ("activeCodePage", "UTF-8")):
        assert found[setting] == value, setting


def debugging(program, name):
    """The program names its symbols, and they turn an address into a line."""
    link = program.__data__[program.__data__.rfind(name.encode() + b".debug\0"):]
    checksum = zlib.crc32(open(f"{BUILD}/bin/{name}.debug", "rb").read())
    assert link[(len(name) + 7 + 3) // 4 * 4:][:4] == checksum.to_bytes(4, "little")
    function, file = {"ColdAnchorLauncher": ("_ZN2ca3job12runUpdateJob", "src/job/update_job.cpp"),
                      "ColdAnchorUpdateHelper": ("_ZN2ca6helper13readArguments", "src/helper/arguments.cpp")}[name]
    address = next(at for symbol, at in symbols(name).items() if symbol.startswith(function))
    place = run("x86_64-w64-mingw32-addr2line", "-e", f"{BUILD}/bin/{name}.debug", address).strip()
    path, line = place.split(" ")[0].rsplit(":", 1)
    assert path == "/cold-anchor/" + file, path
    assert re.sub(r".*\d+", "", function) in open(f"{SOURCE}/{file}").readlines()[int(line) - 1]


def check(name, *expected, path=""):
    file = f"{BUILD}/bin/{path}{name}.exe"
    program = pefile.PE(file)
    program.file = file
    globals()[CASE](program, name, *expected)


for each in PROGRAMS:
    check(each)
if CASE == "resources":
    check("ColdAnchorLauncher", NEXT, path="next/")
