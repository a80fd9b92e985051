"""Windows on POSIX systems, as docs/master-protocol.md describes them: the one window of this program,
and connections to windows of others. One thread; nothing here waits but Window.serve."""
import os
import select
import stat
import struct
from random import SystemRandom
from socket import AF_UNIX, MSG_DONTWAIT, MSG_NOSIGNAL, SO_PEERCRED, SOCK_CLOEXEC, SOCK_NONBLOCK
from socket import SOCK_SEQPACKET, SOL_SOCKET, socket

HELLO, POST, SEND, REPLY = 1, 2, 3, 4
PACKET = struct.Struct("<IHHQIIQq")
MAGIC, VERSION = 0x4F564157, 1
LARGEST_WINDOW = 0x7FFFFFFF
MOST_SILENT = 32

assert PACKET.size == 40


def window_folder():
    runtime = os.environ.get("XDG_RUNTIME_DIR", "")
    try:
        info = os.stat(runtime) if runtime.startswith("/") else None
    except OSError:
        info = None
    if info and stat.S_ISDIR(info.st_mode) and info.st_uid == os.geteuid():
        folder = os.path.join(runtime, "wavo")
    else:
        folder = f"/tmp/wavo-{os.geteuid()}"
    try:
        os.mkdir(folder, 0o700)
    except FileExistsError:
        pass
    info = os.lstat(folder)
    if not stat.S_ISDIR(info.st_mode) or info.st_uid != os.geteuid() or info.st_mode & 0o077:
        raise PermissionError(f"{folder} is not a folder of this user alone")
    return folder


def new_socket():
    return socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC)


def is_trusted(connected):
    """Whether our own user or root is at the other end."""
    _, user, _ = struct.unpack("3i", connected.getsockopt(SOL_SOCKET, SO_PEERCRED, 12))
    return user in (os.geteuid(), 0)


def connect_to(path):
    """The connection to a window. FileNotFoundError, ConnectionRefusedError: there is no such window;
    BlockingIOError: it is there, but too busy to take one."""
    target = new_socket()
    try:
        target.connect(path)
        if not is_trusted(target):
            raise ConnectionRefusedError(path)
    except OSError:
        target.close()
        raise
    return target


def post(to, number, w_param):
    """Over a connection of Window.connect. False: it was not taken; to be tried again."""
    return write_packet(to, POST, 0, number, w_param, 0)


def is_gone(connected):
    """Whether the window at the other end of a connection is gone."""
    try:
        return not connected.recv(PACKET.size, MSG_DONTWAIT)
    except BlockingIOError:
        return False
    except OSError:
        return True


def remove(path):
    try:
        os.unlink(path)
    except FileNotFoundError:
        pass


def write_packet(to, kind, sequence, number, w_param, l_param):
    """False: it was not taken."""
    packet = PACKET.pack(MAGIC, VERSION, kind, sequence, number, 0, w_param, l_param)
    try:
        return to.send(packet, MSG_DONTWAIT | MSG_NOSIGNAL) > 0
    except OSError:
        return False


class Window:
    """The one window of this program. `on_message` is called with number, wParam and lParam of each
    message, posted or sent; `on_refused` with a window whose process wrote what is no packet."""

    def __init__(self, on_message, on_refused):
        self.on_message, self.on_refused = on_message, on_refused
        self.folder = window_folder()
        self._remove_dead()
        self.listener = new_socket()
        unfinished = os.path.join(self.folder, f".new-{os.getpid()}")
        remove(unfinished)
        self.listener.bind(unfinished)
        self.listener.listen(64)
        while True:  # a name of digits alone must stand for a socket that listens already
            self.number = SystemRandom().randint(1, LARGEST_WINDOW)
            try:
                os.link(unfinished, self._path(self.number))
                break
            except FileExistsError:
                continue
        os.unlink(unfinished)
        self.connections = {}  # by descriptor: [socket, window that said hello or 0]
        self.poll = select.poll()
        self.poll.register(self.listener, select.POLLIN)

    def close(self):
        remove(self._path(self.number))
        self.listener.close()
        for descriptor in list(self.connections):
            self._close(descriptor)

    def serve(self, milliseconds):
        """Waits so long for messages at most and handles them."""
        for descriptor, _ in self.poll.poll(milliseconds):
            if descriptor == self.listener.fileno():
                self._accept()
            elif descriptor in self.connections and not self._read(self.connections[descriptor]):
                self._close(descriptor)

    def exists(self, window):
        if not 0 < window <= LARGEST_WINDOW:
            return False
        try:
            connect_to(self._path(window)).close()
        except (FileNotFoundError, ConnectionRefusedError):
            return False
        except BlockingIOError:
            pass
        return True

    def connect(self, window):
        """A connection to another window. Raises what connect_to raises."""
        target = connect_to(self._path(window))
        write_packet(target, HELLO, 0, 0, self.number, 0)
        return target

    def tell_all(self, number):
        """Posts a message to every other window that can be found now; one that is busy is left out."""
        for name in os.listdir(self.folder):
            if name.isascii() and name.isdigit() and int(name) != self.number:
                try:
                    with self.connect(int(name)) as target:
                        post(target, number, 0)  # it is read though the connection ends
                except OSError:
                    pass

    def _path(self, window):
        return os.path.join(self.folder, str(window))

    def _remove_dead(self):
        for entry in os.scandir(self.folder):
            if entry.name.startswith(".new-"):  # perhaps about to become a window
                try:
                    os.kill(int(entry.name[5:].split("-")[0]), 0)
                    continue
                except ProcessLookupError:
                    pass
                except (OSError, ValueError):
                    continue
            elif not (entry.name.isascii() and entry.name.isdigit()):
                continue
            try:
                connect_to(entry.path).close()
            except ConnectionRefusedError:
                remove(entry.path)
            except OSError:
                pass

    def _accept(self):
        try:
            accepted, _ = self.listener.accept()
        except OSError:
            return
        accepted.setblocking(False)
        silent = [descriptor for descriptor, (_, peer) in self.connections.items() if peer == 0]
        if len(silent) >= MOST_SILENT:  # who has not said whose it is gives way
            self._close(silent[0])
        if not is_trusted(accepted):
            accepted.close()
            return
        self.connections[accepted.fileno()] = [accepted, 0]
        self.poll.register(accepted, select.POLLIN)

    def _close(self, descriptor):
        self.poll.unregister(descriptor)
        self.connections.pop(descriptor)[0].close()

    def _read(self, connection):
        """Takes what a connection brings; False when it has to be closed."""
        was_reset = False
        for _ in range(1000):
            try:
                packet = connection[0].recv(PACKET.size + 1, MSG_DONTWAIT)
            except BlockingIOError:
                return True
            except ConnectionResetError:
                if was_reset:
                    return False
                was_reset = True  # it closed with ours unread; its own packets stand behind that
                continue
            except OSError:
                return False
            if not packet:
                return False
            if not self._take(connection, packet):
                if connection[1] != 0:
                    self.on_refused(connection[1])
                return False
        return True

    def _take(self, connection, packet):
        """False when the packet breaks the rules."""
        if len(packet) != PACKET.size:
            return False
        magic, version, kind, sequence, number, _, w_param, l_param = PACKET.unpack(packet)
        if magic != MAGIC or version != VERSION:
            return False
        if kind == HELLO:  # the first one, and no other
            if connection[1] != 0 or not 0 < w_param <= LARGEST_WINDOW:
                return False
            connection[1] = w_param
            return True
        if connection[1] == 0 or kind not in (POST, SEND):
            return False
        self.on_message(number, w_param, l_param)
        if kind == SEND:
            write_packet(connection[0], REPLY, sequence, 0, 0, 1)
        return True
