#!/usr/bin/env python3
"""Writes a program for Windows that does nothing but return, to be signed in demonstrations and tests.

    smallest_program.py FILE

A PE32 image with one section and an entry in each of the 16 data directories, so that there is room for the entry of
a signature.
"""

import pathlib
import struct
import sys

FILE_ALIGNMENT = 0x200
SECTION_ALIGNMENT = 0x1000
IMAGE_BASE = 0x400000
CODE = bytes.fromhex("31C0C3")  # xor eax, eax; ret


def padded(octets, size):
    return octets + bytes(size - len(octets))


def dos_header():
    """Its signature, and where the new header begins."""
    return padded(b"MZ", 60) + struct.pack("<I", 64)


def file_header(optional_header_size):
    machine, sections, time, symbols, symbol_count = 0x14C, 1, 0, 0, 0
    executable_for_32_bits = 0x0102
    return b"PE\0\0" + struct.pack("<HHIIIHH", machine, sections, time, symbols, symbol_count, optional_header_size,
                                   executable_for_32_bits)


def optional_header():
    linker = (14, 0)
    sizes = (FILE_ALIGNMENT, 0, 0)  # code, data, data without contents
    entry = code = SECTION_ALIGNMENT
    data = 2 * SECTION_ALIGNMENT
    versions = (6, 0, 0, 0, 6, 0, 0)  # system, image, subsystem, reserved
    size_of_image, size_of_headers, checksum = 2 * SECTION_ALIGNMENT, FILE_ALIGNMENT, 0
    console, characteristics = 3, 0
    stack_and_heap = (0x100000, 0x1000, 0x100000, 0x1000)
    directories = 16
    return struct.pack("<HBB3I3I3I6HI3IHH4III", 0x10B, *linker, *sizes, entry, code, data, IMAGE_BASE,
                       SECTION_ALIGNMENT, FILE_ALIGNMENT, *versions, size_of_image, size_of_headers, checksum, console,
                       characteristics, *stack_and_heap, 0, directories) + bytes(8 * directories)


def section_header():
    code_to_be_read_and_run = 0x60000020
    return struct.pack("<8sIIIIIIHHI", b".text", len(CODE), SECTION_ALIGNMENT, FILE_ALIGNMENT, FILE_ALIGNMENT, 0, 0, 0,
                       0, code_to_be_read_and_run)


def image():
    optional = optional_header()
    headers = dos_header() + file_header(len(optional)) + optional + section_header()
    return padded(headers, FILE_ALIGNMENT) + padded(CODE, FILE_ALIGNMENT)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: smallest_program.py FILE")
    pathlib.Path(sys.argv[1]).write_bytes(image())
