"""The slots of delayed libraries work where they can't be written, as newer linkers lay them out, whichever linker this
is: python3 slots_test.py RUNNER FOLDER PROGRAM=STATUS..."""
import os, pathlib, struct, subprocess, sys

RUNNER, FOLDER, *PROGRAMS = sys.argv[1:]
WRITE = 0x80000000


def with_closed_slots(data):
    """The program, its section .idata without the right to write."""
    data = bytearray(data)
    pe, = struct.unpack_from("<I", data, 60)
    count, length = struct.unpack_from("<H12xH", data, pe + 6)
    [at] = [at for at in range(pe + 24 + length, pe + 24 + length + 40 * count, 40) if data[at:at + 8] == b".idata\0\0"]
    flags, = struct.unpack_from("<I", data, at + 36)
    print("as linked, .idata can", "be" if flags & WRITE else "not be", "written")
    struct.pack_into("<I", data, at + 36, flags & ~WRITE)
    return data


failed = 0
for row in PROGRAMS:
    path, status = row.rsplit("=", 1)
    program = pathlib.Path(FOLDER, os.path.basename(path))
    program.parent.mkdir(exist_ok=True)
    program.write_bytes(with_closed_slots(pathlib.Path(path).read_bytes()))
    ended = subprocess.run([RUNNER, str(program)], timeout=120).returncode
    print(program.name, "ended with", ended)
    failed += ended != int(status)
sys.exit(failed)
