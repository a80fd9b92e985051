#!/usr/bin/env python3
"""A complete small master for Linux: publishes a sine and a cosine, one line per millisecond, to
every viewer that connects. docs/master-protocol.md describes what it does.

    python3 sine_master.py

Needs Python 3.9 or later and nothing else. SIGINT or SIGTERM ends it, when the viewers have taken
what they were told of; a second one ends it at once. Exit status 0, or 1 when it cannot publish.
"""
import math
import mmap
import os
import signal
import stat
import struct
import sys
import threading
import time

import windows
from windows import remove

AXES = ["X", "Y"]
LIMITS = [(120.0, -120.0, 1000.0, 10000.0, 0.001)] * 2  # upper first
FIFO_LINES = 4096
CYCLE, GRACE, WAIT_AT_END = 1_000_000, 1_000_000_000, 5_000_000_000  # ns

LINK, READY = 0x52C, 0x52D  # from viewers
VALUES, OVERRUN, CAPABILITIES_CHANGED = 0x52C, 0x52D, 0x52F  # to viewers
MASTER_IS_HERE = 0x530  # to viewers that are waiting for a master
DISCONNECT, CONNECT, NEW_VALUES, LINK_ENDED = 1, 2, 1, 2  # wParams of 0x52C

INFO = struct.Struct("<QdQQQ2000s")
RECORD = struct.Struct("<256s5d")
HEADER_SIZE, LINE_SIZE = 64, 8 * len(AXES)
WRITE_INDEX, READER_MARK, READ_INDEX, LINE_SIZE_FIELD, LINE_COUNT = 1, 2, 3, 4, 5  # 8-byte words
SEGMENTS = "/dev/shm"  # where shm_open() makes its files on Linux
INFO_NAME, FIFO_PREFIX, MODULE_PREFIX = "MachineTools_InfoData", "MValues_", "DataModCap"

assert INFO.size == 2040 and RECORD.size == 296


def fence(lock=threading.Lock()):
    """What this thread stored before is seen by other processes before what it stores afterwards.
    A processor of the x86 family keeps that order anyway; giving a lock back and taking it again
    does so everywhere."""
    lock.acquire()
    lock.release()
    lock.acquire()
    lock.release()


# ---- segments ----


class Segment:
    """A segment that this program has made. It is always removed and made anew, never resized: who
    maps the old one keeps it unchanged."""

    def __init__(self, name, size):
        self.path = os.path.join(SEGMENTS, name)
        remove(self.path)
        flags = os.O_RDWR | os.O_CREAT | os.O_EXCL | os.O_NOFOLLOW | os.O_CLOEXEC
        self.file = os.open(self.path, flags, 0o600)
        self.size = size
        try:
            os.posix_fallocate(self.file, 0, size)
            self.bytes = memoryview(mmap.mmap(self.file, size))
        except OSError:
            self.remove()
            raise

    def is_whole(self):
        info = os.fstat(self.file)
        return info.st_nlink > 0 and info.st_size == self.size

    def remove(self):
        # Was the name removed, it may stand for a segment of somebody else by now.
        if os.fstat(self.file).st_nlink > 0:
            remove(self.path)
        os.close(self.file)


def remove_dead_segments():
    """What a master that died has left, for nobody else publishes. Who maps one keeps it."""
    for entry in os.scandir(SEGMENTS):
        if entry.name.startswith((FIFO_PREFIX, MODULE_PREFIX)):
            info = entry.stat(follow_symlinks=False)
            if stat.S_ISREG(info.st_mode) and info.st_uid == os.geteuid():
                remove(entry.path)


def publish_info(window):
    block = Segment(INFO_NAME, INFO.size)
    names = b"".join(axis.encode() + b"\0" for axis in AXES)
    INFO.pack_into(block.bytes, 0, 0, CYCLE / 1e9, 0, len(AXES), FIFO_LINES, names)
    fence()
    block.bytes.cast("Q")[0] = window  # last: now the block counts
    return block


def create_capabilities(window):
    module = Segment(f"{MODULE_PREFIX}{window}", 4 + RECORD.size * len(AXES))
    for k, (axis, limits) in enumerate(zip(AXES, LIMITS)):
        RECORD.pack_into(module.bytes, 4 + RECORD.size * k, axis.encode(), *limits)
    fence()
    module.bytes[:4].cast("i")[0] = len(AXES)  # last: now the records count
    return module


class Fifo:
    """The lines of one viewer."""

    def __init__(self, window):
        self.segment = Segment(f"{FIFO_PREFIX}{window}", HEADER_SIZE + LINE_SIZE * FIFO_LINES)
        # Words of 8 bytes are stored whole, which struct.pack_into("<Q", ...) does not.
        self.words = self.segment.bytes[:HEADER_SIZE].cast("Q")
        self.values = self.segment.bytes[HEADER_SIZE:].cast("d")
        self.write_index = 0  # our own: the one in the segment can be written by others
        self.words[LINE_SIZE_FIELD] = LINE_SIZE
        self.words[LINE_COUNT] = FIFO_LINES

    def is_intact(self):
        """Whether it is still as this master has left it."""
        words = self.words
        return (self.segment.is_whole() and words[LINE_SIZE_FIELD] == LINE_SIZE
                and words[LINE_COUNT] == FIFO_LINES and words[WRITE_INDEX] == self.write_index
                and words[READ_INDEX] < FIFO_LINES)

    def is_held(self):
        return self.words[READER_MARK] != 0

    def waiting(self):
        read = self.words[READ_INDEX]
        if read >= FIFO_LINES:
            return FIFO_LINES - 1  # damaged: as good as full
        return (self.write_index - read) % FIFO_LINES

    def push(self, line):
        """False when there is no room."""
        if self.waiting() == FIFO_LINES - 1:
            return False
        for k, value in enumerate(line):
            self.values[self.write_index * len(AXES) + k] = value
        self._set_write_index((self.write_index + 1) % FIFO_LINES)
        return True

    def clear(self):
        read = self.words[READ_INDEX]
        if read < FIFO_LINES:
            self._set_write_index(read)

    def _set_write_index(self, index):
        self.write_index = index
        fence()  # who sees the index sees the lines before it
        self.words[WRITE_INDEX] = index


# ---- the master ----


class Viewer:
    def __init__(self, window):
        self.window = window
        self.socket = None  # our connection to its window; None: it was too busy to take one
        self.module = create_capabilities(window)
        self.fifo = None
        self.connected = self.limits_due = self.batch_out = False
        self.overrun = self.overrun_told = False
        self.lost_at = None  # when the batch that is out counts as lost; None: never

    def tell(self, what):
        print(f"viewer {self.window} {what}", flush=True)

    def post(self, number, w_param=0):
        return windows.post(self.socket, number, w_param)

    def is_filled(self):
        return self.connected and not self.overrun

    def drop_fifo(self):
        if self.fifo:
            self.fifo.segment.remove()
            self.fifo = None


class Master:
    def __init__(self):
        self.viewers = {}
        self.end_requests = 0
        self.lines_sent = self.batches_answered = self.overruns = 0
        self.window = windows.Window(self.handle, self.forget)

    def another_runs(self):
        try:
            with open(os.path.join(SEGMENTS, INFO_NAME), "rb") as block:
                return self.window.exists(int.from_bytes(block.read(8), "little"))
        except FileNotFoundError:
            return False

    def handle(self, number, w_param, l_param):
        viewer = self.viewers.get(l_param)
        if number == LINK and w_param == CONNECT:
            self.connect(l_param)
        elif number == LINK and w_param == DISCONNECT and viewer:
            self.disconnect(viewer)
        elif number == READY and viewer and viewer.batch_out:
            self.take_answer(viewer)
        # 0x52E and 0x52F need no care here: the modules of this master never change.

    def connect(self, window):
        viewer = self.viewers.get(window)
        if not viewer and (window == self.window.number or not self.window.exists(window)):
            return
        try:
            if not viewer:
                viewer = self.viewers[window] = Viewer(window)
            # A FIFO that the viewer holds, or opens when it comes to the batch, is kept.
            fifo = viewer.fifo
            if fifo and (viewer.batch_out or fifo.is_held()) and fifo.is_intact():
                viewer.lost_at = time.monotonic_ns() + GRACE if viewer.batch_out else None
            else:
                viewer.batch_out, viewer.lost_at = False, None
                viewer.drop_fifo()
                viewer.fifo = Fifo(window)
        except OSError as error:
            print(f"sine_master: no segment for viewer {window}: {error}", file=sys.stderr)
            self.forget(window)
            return
        viewer.overrun = viewer.overrun_told = False
        viewer.limits_due = True
        if not viewer.connected:
            viewer.tell("connected")
        viewer.connected = True

    def disconnect(self, viewer):
        if viewer.connected:
            viewer.tell("disconnected")
        viewer.connected = viewer.overrun = viewer.overrun_told = False
        if not viewer.batch_out:
            viewer.drop_fifo()
        elif viewer.fifo:  # it may still open it: kept, but emptied; it reads nothing now
            viewer.fifo.clear()
        if viewer.socket is None:  # nobody would tell that it is gone
            self.forget(viewer.window)

    def take_answer(self, viewer):
        viewer.batch_out, viewer.lost_at = False, None
        self.batches_answered += 1
        # A disconnected viewer that holds its FIFO still will clear its mark without a word.
        if not viewer.connected and viewer.fifo and not viewer.fifo.is_held():
            viewer.drop_fifo()
        self.tend(viewer)

    def forget(self, window):
        viewer = self.viewers.pop(window, None)
        if viewer:
            viewer.tell("gone")
            viewer.drop_fifo()
            viewer.module.remove()
            if viewer.socket:
                viewer.socket.close()

    def reach(self, viewer):
        """Whether messages can be given to it. One that is busy is tried again with each line."""
        if viewer.socket is None:
            try:
                viewer.socket = self.window.connect(viewer.window)
            except (FileNotFoundError, ConnectionRefusedError):
                self.forget(viewer.window)
            except OSError:
                pass
        return viewer.socket is not None

    def tend(self, viewer):
        """Posts what is due. What the socket does not take now stays due."""
        if not viewer.connected or not self.reach(viewer):
            return
        if viewer.limits_due:
            viewer.limits_due = not viewer.post(CAPABILITIES_CHANGED)
        if viewer.overrun:
            viewer.overrun_told = viewer.overrun_told or viewer.post(OVERRUN)
            return
        if viewer.lost_at is not None and time.monotonic_ns() >= viewer.lost_at:
            viewer.batch_out, viewer.lost_at = False, None
        if not viewer.batch_out and viewer.fifo.waiting() > 0:
            viewer.batch_out = viewer.post(VALUES, NEW_VALUES)

    def serve(self, milliseconds):
        self.window.serve(milliseconds)
        for viewer in list(self.viewers.values()):
            if viewer.socket and windows.is_gone(viewer.socket):
                self.forget(viewer.window)
            else:
                self.tend(viewer)

    def publish(self, line):
        for viewer in list(self.viewers.values()):
            if not viewer.is_filled():
                continue
            if viewer.fifo.push(line):
                self.lines_sent += 1
            else:  # no more lines until it connects again
                viewer.overrun = True
                self.overruns += 1
                viewer.tell("overrun")
            self.tend(viewer)

    def publish_lines(self):
        start, number, step = time.monotonic_ns(), 0, 0
        while self.end_requests == 0:
            if time.monotonic_ns() - start > (number + FIFO_LINES // 2) * CYCLE:
                start, number = time.monotonic_ns(), 0  # it was stopped for long
            while start + number * CYCLE <= time.monotonic_ns():
                angle = 2.0 * math.pi * (step % 1000) / 1000.0
                self.publish((100.0 * math.sin(angle), 100.0 * math.cos(angle)))
                number, step = number + 1, step + 1
            self.serve(1)

    def wait_until_taken(self):
        """No more lines now. The info block stays: a viewer that only opens its FIFO reads it
        again."""
        end = time.monotonic_ns() + WAIT_AT_END
        while (self.end_requests == 1 and time.monotonic_ns() < end
               and any(viewer.is_filled() and (viewer.batch_out or viewer.fifo.waiting() > 0)
                       for viewer in self.viewers.values())):
            self.serve(10)

    def run(self):
        if self.another_runs():
            self.window.close()
            raise FileExistsError("another master runs")
        remove_dead_segments()
        info = publish_info(self.window.number)
        self.window.tell_all(MASTER_IS_HERE)
        print(f"sine_master: window {self.window.number}", flush=True)
        self.publish_lines()
        self.wait_until_taken()
        info.remove()  # nobody new finds this master
        for viewer in list(self.viewers.values()):
            if viewer.connected and self.reach(viewer):
                viewer.post(VALUES, LINK_ENDED)
            self.forget(viewer.window)
        self.window.close()
        print(f"total: lines sent {self.lines_sent}, batches answered {self.batches_answered}, "
              f"overruns {self.overruns}", flush=True)


def main():
    try:
        master = Master()

        def request_end(_number, _frame):
            master.end_requests += 1

        signal.signal(signal.SIGINT, request_end)
        signal.signal(signal.SIGTERM, request_end)
        master.run()
    except OSError as error:
        print(f"sine_master: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
