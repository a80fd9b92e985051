#define _GNU_SOURCE
#include "windows.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

enum { MOST_CONNECTIONS = 64, MOST_PACKETS_AT_ONCE = 1000 };
enum { HELLO = 1, POST = 2, SEND = 3, REPLY = 4 };
#define MAGIC 0x4F564157u

struct packet {
    uint32_t magic;
    uint16_t version, kind;
    uint64_t sequence;
    uint32_t number, reserved;
    uint64_t w_param;
    int64_t l_param;
};
_Static_assert(sizeof(struct packet) == 40, "packet");

/* Somebody posts and sends to us here. */
struct connection {
    int socket;
    uint64_t peer; /* the window that said hello; 0: none yet */
};

static char folder[90]; /* "/.new-" and a process number have room behind it in a socket's path */
static uint64_t own_window;
static int listener;
static struct connection connections[MOST_CONNECTIONS];
static int connection_count;

/* ---- the folder ---- */

static bool find_folder(void) {
    const char* runtime = getenv("XDG_RUNTIME_DIR");
    struct stat info;
    if (runtime && runtime[0] == '/' && stat(runtime, &info) == 0 && S_ISDIR(info.st_mode) &&
        info.st_uid == geteuid()) {
        errno = ENAMETOOLONG; /* no other folder would do: the viewers look in this one */
        if (snprintf(folder, sizeof folder, "%s/wavo", runtime) >= (int)sizeof folder) return false;
    } else {
        snprintf(folder, sizeof folder, "/tmp/wavo-%lu", (unsigned long)geteuid());
    }
    if (mkdir(folder, 0700) != 0 && errno != EEXIST) return false;
    if (lstat(folder, &info) != 0) return false;
    errno = EACCES;
    if (!S_ISDIR(info.st_mode) || info.st_uid != geteuid() || (info.st_mode & 077) != 0)
        return false;
    /* Locked until the end: who clears old files out of /tmp leaves such a folder alone. */
    flock(open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC), LOCK_SH | LOCK_NB);
    return true;
}

static struct sockaddr_un address_of(const char* name) {
    struct sockaddr_un address = {.sun_family = AF_UNIX};
    snprintf(address.sun_path, sizeof address.sun_path, "%s/%.17s", folder, name);
    return address;
}

static const char* name_of(const char* prefix, uint64_t number) {
    static char name[32];
    snprintf(name, sizeof name, "%s%llu", prefix, (unsigned long long)number);
    return name;
}

static int new_socket(void) {
    return socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
}

/* Whether our own user or root is at the other end. */
static bool is_trusted(int connected) {
    struct ucred peer;
    socklen_t size = sizeof peer;
    return getsockopt(connected, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           (peer.uid == geteuid() || peer.uid == 0);
}

static int connect_to(const char* name) {
    struct sockaddr_un address = address_of(name);
    int target = new_socket(), error = errno;
    if (target < 0) return -1;
    if (connect(target, (struct sockaddr*)&address, sizeof address) != 0)
        error = errno;
    else if (is_trusted(target))
        return target;
    else
        error = ECONNREFUSED;
    close(target);
    errno = error;
    return -1;
}

static void remove_dead_windows(void) {
    DIR* all = opendir(folder);
    struct dirent* entry;
    while (all && (entry = readdir(all))) {
        const char* name = entry->d_name;
        if (strncmp(name, ".new-", 5) == 0) { /* perhaps about to become a window */
            if (kill((pid_t)atol(name + 5), 0) == 0 || errno != ESRCH) continue;
        } else if (strspn(name, "0123456789") != strlen(name)) {
            continue;
        }
        int connected = connect_to(name);
        if (connected < 0 && errno == ECONNREFUSED) unlinkat(dirfd(all), name, 0);
        if (connected >= 0) close(connected);
    }
    if (all) closedir(all);
}

/* ---- our window ---- */

/* A name of digits alone must stand for a socket that listens already. */
uint64_t window_open(const char** what) {
    *what = folder;
    if (!find_folder()) return 0;
    remove_dead_windows();
    struct sockaddr_un address, unfinished = address_of(name_of(".new-", (uint64_t)getpid()));
    unlink(unfinished.sun_path);
    *what = "socket";
    listener = new_socket();
    if (listener < 0 || bind(listener, (struct sockaddr*)&unfinished, sizeof unfinished) != 0 ||
        listen(listener, MOST_CONNECTIONS) != 0)
        return 0;
    *what = "name of the socket";
    do { /* any number that nobody uses */
        uint32_t bits = (uint32_t)time(NULL) + (uint32_t)getpid();
        if (getrandom(&bits, sizeof bits, 0) < 0) bits += (uint32_t)own_window;
        own_window = bits % LARGEST_WINDOW + 1;
        address = address_of(name_of("", own_window));
        errno = 0;
    } while (link(unfinished.sun_path, address.sun_path) != 0 && errno == EEXIST);
    int error = errno;
    unlink(unfinished.sun_path);
    errno = error;
    return error == 0 ? own_window : 0;
}

void window_close(void) {
    unlink(address_of(name_of("", own_window)).sun_path);
    close(listener);
    while (connection_count > 0) close(connections[--connection_count].socket);
}

static bool write_packet(int to, int kind, uint64_t sequence, uint32_t number, uint64_t w,
                         int64_t l) {
    struct packet packet = {MAGIC, 1, (uint16_t)kind, sequence, number, 0, w, l};
    return send(to, &packet, sizeof packet, MSG_DONTWAIT | MSG_NOSIGNAL) > 0;
}

/* Returns false when the packet breaks the rules. */
static bool take_packet(struct connection* from, const struct packet* packet, ssize_t size) {
    if (size != (ssize_t)sizeof *packet || packet->magic != MAGIC || packet->version != 1)
        return false;
    if (packet->kind == HELLO) { /* the first one, and no other */
        if (from->peer != 0 || packet->w_param == 0 || packet->w_param > LARGEST_WINDOW)
            return false;
        from->peer = packet->w_param;
        return true;
    }
    if (from->peer == 0 || (packet->kind != POST && packet->kind != SEND)) return false;
    on_message(&(struct message){packet->number, packet->w_param, packet->l_param});
    if (packet->kind == POST || write_packet(from->socket, REPLY, packet->sequence, 0, 0, 1))
        return true;
    return errno != EAGAIN; /* it leaves its replies unread; or it has gone: more may be written */
}

/* Reads what one connection brings; returns false when it has to be closed. */
static bool serve(struct connection* from) {
    struct packet packet;
    bool was_reset = false;
    for (int count = 0; count < MOST_PACKETS_AT_ONCE; ++count) {
        /* MSG_TRUNC gives the true size of a packet that is too long. */
        ssize_t size = recv(from->socket, &packet, sizeof packet, MSG_DONTWAIT | MSG_TRUNC);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0 && errno == ECONNRESET && !was_reset) {
            was_reset = true; /* it closed with ours unread; its own packets stand behind that */
            continue;
        }
        if (size <= 0) return size < 0 && errno == EAGAIN;
        if (take_packet(from, &packet, size)) continue;
        if (from->peer != 0) on_refused(from->peer);
        return false;
    }
    return true;
}

static void close_connection(int place) {
    close(connections[place].socket);
    connections[place] = connections[--connection_count];
}

static void accept_connection(void) {
    int accepted = accept4(listener, NULL, NULL, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (accepted < 0) return;
    for (int i = 0; connection_count == MOST_CONNECTIONS && i < connection_count; ++i)
        if (connections[i].peer == 0) close_connection(i); /* it has not said whose it is */
    if (connection_count == MOST_CONNECTIONS || !is_trusted(accepted))
        close(accepted);
    else
        connections[connection_count++] = (struct connection){.socket = accepted};
}

void window_serve(int milliseconds) {
    struct pollfd polled[1 + MOST_CONNECTIONS] = {{.fd = listener, .events = POLLIN}};
    int count = connection_count;
    for (int i = 0; i < count; ++i)
        polled[1 + i] = (struct pollfd){.fd = connections[i].socket, .events = POLLIN};
    if (poll(polled, (nfds_t)(1 + count), milliseconds) <= 0) return;
    for (int i = count - 1; i >= 0;
         --i) /* backwards: the last one takes the place of a closed one */
        if (polled[1 + i].revents != 0 && !serve(&connections[i])) close_connection(i);
    if (polled[0].revents != 0) accept_connection();
}

/* ---- windows of others ---- */

bool window_exists(uint64_t window) {
    if (window == 0 || window > LARGEST_WINDOW) return false;
    int connected = connect_to(name_of("", window)), error = errno;
    if (connected >= 0) close(connected);
    return connected >= 0 || (error != ENOENT && error != ECONNREFUSED);
}

int window_connect(uint64_t window) {
    int connected = connect_to(name_of("", window));
    if (connected >= 0) write_packet(connected, HELLO, 0, 0, own_window, 0);
    return connected;
}

bool window_post(int connection, uint32_t number, uint64_t w_param) {
    return write_packet(connection, POST, 0, number, w_param, 0);
}

void window_tell_all(uint32_t number) {
    DIR* all = opendir(folder);
    struct dirent* entry;
    while (all && (entry = readdir(all))) {
        uint64_t window = strtoull(entry->d_name, NULL, 10);
        bool is_window = strspn(entry->d_name, "0123456789") == strlen(entry->d_name);
        int connection = is_window && window != own_window ? window_connect(window) : -1;
        if (connection < 0) continue;
        window_post(connection, number, 0); /* it is read though the connection ends */
        close(connection);
    }
    if (all) closedir(all);
}

bool window_is_gone(int connection) {
    char byte; /* replies do not come: nothing is sent here, only posted */
    ssize_t size = recv(connection, &byte, 1, MSG_DONTWAIT);
    return size == 0 || (size < 0 && errno != EAGAIN && errno != EINTR);
}
