#!/usr/bin/python3
"""The slots of delayed libraries work where they can't be written, as newer linkers lay them out, whichever linker this
is: slots_test.py RUNNER FOLDER PROGRAM=STATUS..."""
import os, subprocess, sys

import pefile

RUNNER, FOLDER, *PROGRAMS = sys.argv[1:]
WRITE = pefile.SECTION_CHARACTERISTICS["IMAGE_SCN_MEM_WRITE"]


def close_slots(path, copy):
    """Writes the program to `copy`, its section .idata without the right to write."""
    program = pefile.PE(path)
    [section] = [section for section in program.sections if section.Name.rstrip(b"\0") == b".idata"]
    print("as linked, .idata can", "be" if section.Characteristics & WRITE else "not be", "written")
    section.Characteristics &= ~WRITE
    program.write(copy)


os.makedirs(FOLDER, exist_ok=True)
failed = 0
for row in PROGRAMS:
    path, status = row.rsplit("=", 1)
    copy = os.path.join(FOLDER, os.path.basename(path))
    close_slots(path, copy)
    ended = subprocess.run([RUNNER, copy], timeout=120).returncode
    print(os.path.basename(path), "ended with", ended)
    failed += ended != int(status)
sys.exit(failed)
