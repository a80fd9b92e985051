/*
 * A complete small master for POSIX systems: publishes a sine and a cosine, one line per
 * millisecond, to every viewer that connects. docs/master-protocol.md describes what it does.
 *
 *     cc -std=c11 -Wall -Wextra -Wpedantic -o sine_master sine_master.c -lm
 *     ./sine_master
 *
 * SIGINT or SIGTERM ends it. Exit status 0, or 1 when it cannot publish.
 */
#define _POSIX_C_SOURCE 200809L
#include <errno.h>
#include <fcntl.h>
#include <math.h>
#include <poll.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

enum { AXES = 2, FIFO_LINES = 4096, CYCLE_NS = 1000000, MOST_VIEWERS = 16, MOST_CONNECTIONS = 64 };
enum { LINK = 0x52C, READY = 0x52D };                                   /* from viewers */
enum { VALUES = 0x52C, OVERRUN = 0x52D, CAPABILITIES_CHANGED = 0x52F }; /* to viewers */
enum { DISCONNECT = 1, CONNECT = 2, NEW_VALUES = 1, LINK_ENDED = 2 };   /* wParams of 0x52C */
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
struct info_block {
    _Atomic uint64_t master_window;
    double cycle_time;
    uint64_t unused, axis_count, fifo_lines;
    char axis_names[2000];
};
struct fifo {
    uint64_t master_word;
    _Atomic uint64_t write_index, reader_mark, read_index;
    uint64_t line_size, line_count, master_words[2];
    double lines[FIFO_LINES][AXES];
};
_Static_assert(sizeof(struct packet) == 40, "packet");
_Static_assert(sizeof(struct info_block) == 2040, "info block");
_Static_assert(sizeof(struct fifo) == 64 + FIFO_LINES * AXES * 8, "value FIFO");
enum { RECORD_SIZE = 296, MODULE_SIZE = 4 + AXES * RECORD_SIZE };

struct viewer {
    uint64_t window; /* 0: this place is free */
    int socket;      /* our connection to its window */
    int connected, batch_out, overrun;
    struct fifo* fifo; /* null: none */
};

static volatile sig_atomic_t end_requested;
static char folder[84];
static uint64_t own_window;
static struct viewer viewers[MOST_VIEWERS];

static void request_end(int number) {
    (void)number;
    end_requested = 1;
}

static void fail(const char* what) {
    fprintf(stderr, "sine_master: %s: %s\n", what, strerror(errno));
    exit(1);
}

static const char* segment_name(const char* prefix, uint64_t window) {
    static char name[64];
    sprintf(name, "/%s%llu", prefix, (unsigned long long)window);
    return name;
}

/* Segments are always removed and created anew: who maps the old one keeps it unchanged. */
static void* create_segment(const char* name, size_t size) {
    shm_unlink(name);
    int file = shm_open(name, O_RDWR | O_CREAT | O_EXCL, 0600);
    if (file < 0) return NULL;
    void* data = MAP_FAILED;
    if (posix_fallocate(file, 0, (off_t)size) == 0)
        data = mmap(NULL, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (data == MAP_FAILED) shm_unlink(name);
    return data == MAP_FAILED ? NULL : data;
}

static void find_folder(void) {
    const char* runtime = getenv("XDG_RUNTIME_DIR");
    struct stat info;
    if (runtime && runtime[0] == '/' && stat(runtime, &info) == 0 && S_ISDIR(info.st_mode) &&
        info.st_uid == geteuid()) {
        errno = ENAMETOOLONG;
        if (snprintf(folder, sizeof folder, "%s/wavo", runtime) >= (int)sizeof folder)
            fail(runtime);
    } else
        sprintf(folder, "/tmp/wavo-%lu", (unsigned long)geteuid());
    if (mkdir(folder, 0700) != 0 && errno != EEXIST) fail(folder);
    errno = EACCES;
    if (lstat(folder, &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != geteuid() ||
        (info.st_mode & 077) != 0)
        fail(folder);
}

static struct sockaddr_un address_of(const char* prefix, uint64_t number) {
    struct sockaddr_un address = {.sun_family = AF_UNIX};
    sprintf(address.sun_path, "%s/%s%llu", folder, prefix, (unsigned long long)number);
    return address;
}

static int new_socket(void) {
    return socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
}

/* A name of digits alone must stand for a socket that listens already. */
static int open_window(void) {
    struct sockaddr_un address, unfinished = address_of(".new-", (uint64_t)getpid());
    unlink(unfinished.sun_path);
    int listener = new_socket();
    if (listener < 0 || bind(listener, (struct sockaddr*)&unfinished, sizeof unfinished) != 0 ||
        listen(listener, 16) != 0)
        fail("socket");
    own_window = (uint64_t)time(NULL) * 7919 + (uint64_t)getpid();
    do { /* any number that nobody uses, from 1 to 2^31 - 1 */
        own_window = (own_window * 48271) % 0x7FFFFFFE + 1;
        address = address_of("", own_window);
        errno = 0;
    } while (link(unfinished.sun_path, address.sun_path) != 0 && errno == EEXIST);
    if (errno != 0) fail("socket name");
    unlink(unfinished.sun_path);
    return listener;
}

static int connect_to(uint64_t window) {
    struct sockaddr_un address = address_of("", window);
    int target = new_socket();
    if (target < 0 || connect(target, (struct sockaddr*)&address, sizeof address) == 0)
        return target;
    close(target);
    return -1;
}

static int write_packet(int to, int kind, uint64_t sequence, uint32_t number, uint64_t w,
                        int64_t l) {
    struct packet packet = {MAGIC, 1, (uint16_t)kind, sequence, number, 0, w, l};
    return send(to, &packet, sizeof packet, MSG_DONTWAIT | MSG_NOSIGNAL) > 0;
}

static int post(const struct viewer* viewer, uint32_t number, uint64_t w_param) {
    return write_packet(viewer->socket, POST, 0, number, w_param, 0);
}

static void remove_fifo(struct viewer* viewer) {
    if (!viewer->fifo) return;
    shm_unlink(segment_name("MValues_", viewer->window));
    munmap(viewer->fifo, sizeof *viewer->fifo);
    viewer->fifo = NULL;
}

static void create_fifo(struct viewer* viewer) {
    remove_fifo(viewer);
    viewer->fifo = create_segment(segment_name("MValues_", viewer->window), sizeof(struct fifo));
    if (!viewer->fifo) return;
    viewer->fifo->line_size = AXES * sizeof(double);
    viewer->fifo->line_count = FIFO_LINES;
}

static void create_capabilities(uint64_t window) {
    static const char* const names[AXES] = {"X", "Y"};
    static const double limits[5] = {120.0, -120.0, 1000.0, 10000.0, 0.001}; /* upper first */
    unsigned char* module = create_segment(segment_name("DataModCap", window), MODULE_SIZE);
    if (!module) return;
    for (size_t k = 0; k < AXES; ++k) { /* the records are not aligned: copied, never pointed to */
        unsigned char* record = module + 4 + k * RECORD_SIZE;
        strcpy((char*)record, names[k]);
        memcpy(record + 256, limits, sizeof limits);
    }
    memcpy(module, &(int32_t){AXES}, 4);
    munmap(module, MODULE_SIZE);
}

static void forget(struct viewer* viewer) {
    remove_fifo(viewer);
    shm_unlink(segment_name("DataModCap", viewer->window));
    close(viewer->socket);
    *viewer = (struct viewer){0}; /* a free place again */
}

static struct viewer* find_viewer(uint64_t window) {
    for (int i = 0; i < MOST_VIEWERS; ++i)
        if (viewers[i].window == window) return &viewers[i];
    return NULL;
}

static void announce(struct viewer* v) {
    if (!v->connected || v->batch_out || v->overrun) return;
    if (v->fifo->write_index != v->fifo->read_index) v->batch_out = post(v, VALUES, NEW_VALUES);
}

static void connect_viewer(uint64_t window) {
    struct viewer* viewer = find_viewer(window);
    if (!viewer) {
        viewer = find_viewer(0); /* a free place */
        int target = viewer ? connect_to(window) : -1;
        if (target < 0) return;
        *viewer = (struct viewer){.window = window, .socket = target};
        write_packet(target, HELLO, 0, 0, own_window, 0);
        create_capabilities(window);
    }
    /* A FIFO that the viewer holds, or opens when it comes to the batch, is kept. */
    if (!viewer->fifo || (!viewer->batch_out && atomic_load(&viewer->fifo->reader_mark) == 0))
        create_fifo(viewer);
    viewer->connected = viewer->fifo != NULL;
    viewer->overrun = 0;
    post(viewer, CAPABILITIES_CHANGED, 0);
}

static void disconnect_viewer(struct viewer* viewer) {
    viewer->connected = viewer->overrun = 0;
    if (!viewer->batch_out) remove_fifo(viewer);
    /* Else the viewer may still open it: keep it, but empty. It waits for us and reads nothing. */
    if (viewer->fifo) viewer->fifo->write_index = atomic_load(&viewer->fifo->read_index);
}

static void handle_message(const struct packet* message) {
    uint64_t window = (uint64_t)message->l_param;
    struct viewer* viewer = window != 0 ? find_viewer(window) : NULL;
    if (message->number == LINK && message->w_param == CONNECT && window != 0) {
        connect_viewer(window);
    } else if (message->number == LINK && message->w_param == DISCONNECT && viewer) {
        disconnect_viewer(viewer);
    } else if (message->number == READY && viewer && viewer->batch_out) {
        viewer->batch_out = 0;
        announce(viewer);
    } /* 0x52E and 0x52F need no care here: the modules of this master never change */
}

static void write_line(struct viewer* viewer, const double line[AXES]) {
    struct fifo* fifo = viewer->fifo;
    if (!viewer->connected || viewer->overrun) return;
    uint64_t place = fifo->write_index % FIFO_LINES, next = (place + 1) % FIFO_LINES;
    /* Acquire: the viewer has finished copying out of the slots before its index. */
    if (next == atomic_load_explicit(&fifo->read_index, memory_order_acquire)) {
        viewer->overrun = post(viewer, OVERRUN, 0); /* no more lines until it connects again */
        return;
    }
    memcpy(fifo->lines[place], line, AXES * sizeof(double));
    /* Release: who sees the index sees the line. */
    atomic_store_explicit(&fifo->write_index, next, memory_order_release);
    announce(viewer);
}

/* Reads what one connection brings; returns 0 when it has to be closed. */
static int serve(int connection) {
    struct packet packet;
    ssize_t size;
    while ((size = recv(connection, &packet, sizeof packet, MSG_DONTWAIT)) > 0) {
        if (size != (ssize_t)sizeof packet || packet.magic != MAGIC || packet.version != 1)
            return 0;
        if (packet.kind == POST || packet.kind == SEND) handle_message(&packet);
        if (packet.kind == SEND && !write_packet(connection, REPLY, packet.sequence, 0, 0, 1))
            return 0;
    }
    return size < 0 && (errno == EAGAIN || errno == EINTR);
}

/* polled[0] is the listener, behind it stand the connections of those who talk to us. */
static void wait_and_serve(struct pollfd* polled, int* count, int timeout) {
    char byte;
    if (poll(polled, (nfds_t)*count, timeout) > 0) {
        for (int i = *count - 1; i > 0; --i) {
            if (polled[i].revents == 0 || serve(polled[i].fd)) continue;
            close(polled[i].fd);
            polled[i] = polled[--*count];
        }
        int accepted = *count <= MOST_CONNECTIONS ? accept(polled[0].fd, NULL, NULL) : -1;
        if (accepted >= 0) polled[(*count)++] = (struct pollfd){.fd = accepted, .events = POLLIN};
    }
    for (int i = 0; i < MOST_VIEWERS; ++i) /* the end of the connection: its window is gone */
        if (viewers[i].window && recv(viewers[i].socket, &byte, 1, MSG_DONTWAIT) == 0)
            forget(&viewers[i]);
}

static int64_t now_ns(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (int64_t)now.tv_sec * 1000000000 + now.tv_nsec;
}

static int another_runs(void) {
    uint64_t other = 0;
    int file = shm_open("/MachineTools_InfoData", O_RDONLY, 0);
    int known = file >= 0 && read(file, &other, sizeof other) == (ssize_t)sizeof other;
    if (file >= 0) close(file);
    return known && connect_to(other) >= 0; /* else one that died left its block behind */
}

static void publish_info(void) {
    struct info_block* info = create_segment("/MachineTools_InfoData", sizeof *info);
    if (!info) fail("info block");
    info->cycle_time = CYCLE_NS / 1e9;
    info->axis_count = AXES;
    info->fifo_lines = FIFO_LINES;
    memcpy(info->axis_names, "X\0Y", sizeof "X\0Y");
    atomic_store(&info->master_window, own_window); /* last: now the block counts */
}

int main(void) {
    struct sigaction action = {.sa_handler = request_end};
    sigaction(SIGINT, &action, NULL);
    sigaction(SIGTERM, &action, NULL);
    find_folder();
    errno = EEXIST;
    if (another_runs()) fail("another master");
    struct pollfd polled[2 + MOST_CONNECTIONS] = {{.fd = open_window(), .events = POLLIN}};
    int count = 1;
    publish_info();
    printf("sine_master: window %llu\n", (unsigned long long)own_window);
    fflush(stdout);
    for (int64_t number = 0, start = now_ns(); !end_requested;) {
        for (; start + number * CYCLE_NS <= now_ns(); ++number) {
            double angle = 2.0 * 3.14159265358979323846 * (double)number / 1000.0;
            double line[AXES] = {100.0 * sin(angle), 100.0 * cos(angle)};
            for (int i = 0; i < MOST_VIEWERS; ++i) write_line(&viewers[i], line);
        }
        wait_and_serve(polled, &count, 1);
    }
    shm_unlink("/MachineTools_InfoData");
    for (int i = 0; i < MOST_VIEWERS; ++i) {
        if (!viewers[i].window) continue;
        if (viewers[i].connected) post(&viewers[i], VALUES, LINK_ENDED);
        forget(&viewers[i]);
    }
    unlink(address_of("", own_window).sun_path);
    return 0;
}
