#!/usr/bin/env python3
"""Prints the lines of a Wavo recording as CSV, and its events on standard error.

    read_recording.py FILE.mcap

Needs nothing but Python. Reads recordings that were cut off, too: as far as whole chunks go.
"""
import json
import struct
import sys
import zlib


def text(data, at):
    """A text with its length in front: the text, and where the next field begins."""
    size, = struct.unpack_from("<I", data, at)
    return data[at + 4:at + 4 + size].decode(), at + 4 + size


def records(data, at):
    """Opcode and content of the whole records from byte `at` on."""
    while at + 9 <= len(data):
        opcode, size = struct.unpack_from("<BQ", data, at)
        if at + 9 + size > len(data):
            return  # cut off
        yield opcode, data[at + 9:at + 9 + size]
        at += 9 + size


def metadata(content):
    """Name and entries of a Metadata record."""
    name, at = text(content, 0)
    entries, end = {}, at + 4 + struct.unpack_from("<I", content, at)[0]
    at += 4
    while at < end:
        key, at = text(content, at)
        entries[key], at = text(content, at)
    return name, entries


def chunk(content):
    """The records of a chunk, none when they are damaged."""
    crc, = struct.unpack_from("<I", content, 24)
    compression, at = text(content, 28)
    inner = content[at + 8:]
    if compression or (crc and zlib.crc32(inner) != crc):
        print("a chunk is damaged or compressed and left out", file=sys.stderr)
        return
    yield from records(inner, 0)


def main(path):
    with open(path, "rb") as file:
        data = file.read()
    if data[:8] != b"\x89MCAP0\r\n":
        sys.exit(f"{path} is not a recording")
    topics = {}
    for opcode, content in records(data, 8):
        if opcode == 0x0F:  # the end of the data: what follows is an index
            break
        if opcode == 0x04:  # a channel
            topics[struct.unpack_from("<H", content)[0]] = text(content, 4)[0]
        elif opcode == 0x0C:  # metadata
            name, entries = metadata(content)
            if name == "wavo":
                print("line,time_ns," + ",".join(json.loads(entries["axes"])))
        elif opcode == 0x06:  # a chunk
            for inner_opcode, message in chunk(content):
                if inner_opcode != 0x05:
                    continue
                channel, number, time = struct.unpack_from("<HIQ", message)
                if topics[channel] == "lines":
                    values = struct.unpack_from(f"<{(len(message) - 26) // 8}d", message, 26)
                    print(f"{number},{time}," + ",".join(map(repr, values)))
                else:
                    print("event:", message[22:].decode(), file=sys.stderr)


if __name__ == "__main__":
    main(sys.argv[1])
