/*
 * A complete small master for Linux: publishes a sine and a cosine, one line per millisecond, to
 * every viewer that connects. docs/master-protocol.md describes what it does.
 *
 *     cc -std=c11 -Wall -Wextra -Wpedantic -o sine_master sine_master.c windows.c -lm
 *     ./sine_master
 *
 * SIGINT or SIGTERM ends it, when the viewers have taken what they were told of; a second one ends
 * it at once. Exit status 0, or 1 when it cannot publish.
 */
#define _GNU_SOURCE
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <math.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "windows.h"

enum { AXES = 2, FIFO_LINES = 4096, MOST_VIEWERS = 16 };
enum { LINK = 0x52C, READY = 0x52D };                                   /* from viewers */
enum { VALUES = 0x52C, OVERRUN = 0x52D, CAPABILITIES_CHANGED = 0x52F }; /* to viewers */
enum { MASTER_IS_HERE = 0x530 }; /* to viewers that are waiting for a master */
enum { DISCONNECT = 1, CONNECT = 2, NEW_VALUES = 1, LINK_ENDED = 2 }; /* wParams of 0x52C */
static const int64_t CYCLE = 1000000, GRACE = 1000000000, WAIT_AT_END = 5000000000; /* ns */

struct info_block {
    _Atomic uint64_t master_window;
    double cycle_time;
    uint64_t unused, axis_count, fifo_lines;
    char axis_names[2000];
};
struct fifo {
    uint64_t master_word;
    _Atomic uint64_t write_index, reader_mark, read_index, line_size, line_count;
    uint64_t master_words[2];
    double lines[FIFO_LINES][AXES];
};
_Static_assert(sizeof(struct info_block) == 2040, "info block");
_Static_assert(sizeof(struct fifo) == 64 + FIFO_LINES * AXES * 8, "value FIFO");
enum { RECORD_SIZE = 296, MODULE_SIZE = 4 + AXES * RECORD_SIZE };

struct viewer {
    uint64_t window; /* 0: this place is free */
    int socket;      /* our connection to its window; -1: the window was too busy to take one */
    bool connected, limits_due, batch_out, overrun, overrun_told;
    bool may_be_lost;  /* it connected again while a batch was out, ... */
    int64_t lost_at;   /* ... which counts as lost from then on */
    struct fifo* fifo; /* null: none */
    int fifo_file;
    uint64_t write_index; /* our own: the one in the segment can be written by others */
};

static volatile sig_atomic_t end_requests;
static uint64_t own_window;
static struct viewer viewers[MOST_VIEWERS];
static unsigned long long lines_sent, batches_answered, overruns;

static void request_end(int number) {
    (void)number;
    end_requests = end_requests + 1;
}

static void fail(const char* what) {
    fprintf(stderr, "sine_master: %s: %s\n", what, strerror(errno));
    exit(1);
}

static void tell(const struct viewer* viewer, const char* what) {
    printf("viewer %llu %s\n", (unsigned long long)viewer->window, what);
    fflush(stdout);
}

static int64_t now_ns(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (int64_t)now.tv_sec * 1000000000 + now.tv_nsec;
}

/* ---- segments ---- */

static const char* segment_name(const char* prefix, uint64_t window) {
    static char name[64];
    snprintf(name, sizeof name, "/%s%llu", prefix, (unsigned long long)window);
    return name;
}

/* Segments are always removed and created anew: who maps the old one keeps it unchanged. */
static void* create_segment(const char* name, size_t size, int* file) {
    shm_unlink(name);
    *file = shm_open(name, O_RDWR | O_CREAT | O_EXCL, 0600);
    if (*file < 0) return NULL;
    void* data = MAP_FAILED;
    errno = posix_fallocate(*file, 0, (off_t)size);
    if (errno == 0) data = mmap(NULL, size, PROT_READ | PROT_WRITE, MAP_SHARED, *file, 0);
    if (data != MAP_FAILED) return data;
    close(*file);
    shm_unlink(name);
    return NULL;
}

/* What a master that died has left, for nobody else publishes. Who maps a segment keeps it. */
static void remove_dead_segments(void) {
    DIR* all = opendir("/dev/shm");
    struct dirent* entry;
    while (all && (entry = readdir(all))) {
        struct stat info;
        char name[1 + sizeof entry->d_name];
        if (strncmp(entry->d_name, "MValues_", 8) != 0 &&
            strncmp(entry->d_name, "DataModCap", 10) != 0)
            continue;
        snprintf(name, sizeof name, "/%s", entry->d_name);
        if (fstatat(dirfd(all), entry->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(info.st_mode) && info.st_uid == geteuid())
            shm_unlink(name);
    }
    if (all) closedir(all);
}

static bool another_runs(void) {
    uint64_t window = 0;
    int file = shm_open("/MachineTools_InfoData", O_RDONLY, 0);
    bool known = file >= 0 && read(file, &window, sizeof window) == (ssize_t)sizeof window;
    if (file >= 0) close(file);
    return known && window_exists(window); /* else one that died left its block behind */
}

static void publish_info(void) {
    int file;
    struct info_block* info = create_segment("/MachineTools_InfoData", sizeof *info, &file);
    if (!info) fail("info block");
    info->cycle_time = (double)CYCLE / 1e9;
    info->axis_count = AXES;
    info->fifo_lines = FIFO_LINES;
    memcpy(info->axis_names, "X\0Y", sizeof "X\0Y");
    atomic_store(&info->master_window, own_window); /* last: now the block counts */
}

static void create_capabilities(uint64_t window) {
    static const char* const names[AXES] = {"X", "Y"};
    static const double limits[5] = {120.0, -120.0, 1000.0, 10000.0, 0.001}; /* upper first */
    int file;
    unsigned char* module = create_segment(segment_name("DataModCap", window), MODULE_SIZE, &file);
    if (!module) return;
    for (size_t k = 0; k < AXES; ++k) { /* the records are not aligned: copied, never pointed to */
        unsigned char* record = module + 4 + k * RECORD_SIZE;
        strcpy((char*)record, names[k]);
        memcpy(record + 256, limits, sizeof limits);
    }
    atomic_store((_Atomic int32_t*)(void*)module, AXES); /* last: now the records count */
    munmap(module, MODULE_SIZE);
    close(file);
}

/* ---- the value FIFO of a viewer ---- */

static void remove_fifo(struct viewer* viewer) {
    struct stat info;
    if (!viewer->fifo) return;
    /* Was the name removed, it may stand for a segment of somebody else by now. */
    if (fstat(viewer->fifo_file, &info) == 0 && info.st_nlink > 0)
        shm_unlink(segment_name("MValues_", viewer->window));
    munmap(viewer->fifo, sizeof *viewer->fifo);
    close(viewer->fifo_file);
    viewer->fifo = NULL;
}

static void create_fifo(struct viewer* viewer) {
    remove_fifo(viewer);
    viewer->write_index = 0;
    viewer->fifo = create_segment(segment_name("MValues_", viewer->window), sizeof(struct fifo),
                                  &viewer->fifo_file);
    if (!viewer->fifo) return;
    atomic_store(&viewer->fifo->line_size, AXES * sizeof(double));
    atomic_store(&viewer->fifo->line_count, FIFO_LINES);
}

/* Whether the segment is still as this master has left it. */
static bool is_intact(const struct viewer* viewer) {
    struct fifo* fifo = viewer->fifo;
    struct stat info;
    return fifo && fstat(viewer->fifo_file, &info) == 0 && info.st_nlink > 0 &&
           info.st_size == (off_t)sizeof *fifo && fifo->line_size == AXES * sizeof(double) &&
           fifo->line_count == FIFO_LINES && fifo->write_index == viewer->write_index &&
           fifo->read_index < FIFO_LINES;
}

/* Acquire: the viewer has finished copying out of the slots before its index. */
static uint64_t lines_waiting(const struct viewer* viewer) {
    uint64_t read = atomic_load_explicit(&viewer->fifo->read_index, memory_order_acquire);
    if (read >= FIFO_LINES) return FIFO_LINES - 1; /* damaged: as good as full */
    return (viewer->write_index + FIFO_LINES - read) % FIFO_LINES;
}

/* Release: who sees the index sees the lines before it. */
static void set_write_index(struct viewer* viewer, uint64_t index) {
    viewer->write_index = index;
    atomic_store_explicit(&viewer->fifo->write_index, index, memory_order_release);
}

/* ---- what is told to viewers ---- */

static struct viewer* find_viewer(uint64_t window) {
    for (int i = 0; i < MOST_VIEWERS; ++i)
        if (viewers[i].window == window) return &viewers[i];
    return NULL;
}

static void forget(struct viewer* viewer) {
    tell(viewer, "gone");
    remove_fifo(viewer);
    shm_unlink(segment_name("DataModCap", viewer->window));
    if (viewer->socket >= 0) close(viewer->socket);
    *viewer = (struct viewer){0}; /* a free place again */
}

/* Whether messages can be given to the viewer. One that is busy is tried again with each line. */
static bool reach(struct viewer* viewer) {
    if (viewer->socket < 0) viewer->socket = window_connect(viewer->window);
    if (viewer->socket >= 0) return true;
    if (errno == ENOENT || errno == ECONNREFUSED) forget(viewer);
    return false;
}

/* Posts what is due. What the socket does not take now stays due. */
static void tend(struct viewer* viewer) {
    if (!viewer->connected || !reach(viewer)) return;
    if (viewer->limits_due)
        viewer->limits_due = !window_post(viewer->socket, CAPABILITIES_CHANGED, 0);
    if (viewer->overrun) {
        viewer->overrun_told = viewer->overrun_told || window_post(viewer->socket, OVERRUN, 0);
        return;
    }
    if (viewer->may_be_lost && now_ns() >= viewer->lost_at)
        viewer->may_be_lost = viewer->batch_out = false;
    if (!viewer->batch_out && lines_waiting(viewer) > 0)
        viewer->batch_out = window_post(viewer->socket, VALUES, NEW_VALUES);
}

static void write_line(struct viewer* viewer, const double line[AXES]) {
    if (!viewer->connected || viewer->overrun) return;
    if (lines_waiting(viewer) == FIFO_LINES - 1) { /* no more lines until it connects again */
        viewer->overrun = true;
        ++overruns;
        tell(viewer, "overrun");
        return;
    }
    memcpy(viewer->fifo->lines[viewer->write_index], line, AXES * sizeof(double));
    set_write_index(viewer, (viewer->write_index + 1) % FIFO_LINES);
    ++lines_sent;
}

static void tend_all(void) {
    for (int i = 0; i < MOST_VIEWERS; ++i) {
        if (viewers[i].window && viewers[i].socket >= 0 && window_is_gone(viewers[i].socket))
            forget(&viewers[i]);
        tend(&viewers[i]);
    }
}

/* ---- what viewers tell ---- */

static void connect_viewer(uint64_t window) {
    struct viewer* viewer = find_viewer(window);
    if (!viewer) {
        viewer = find_viewer(0); /* a free place */
        if (!viewer || window == own_window || !window_exists(window)) return;
        *viewer = (struct viewer){.window = window, .socket = -1};
        create_capabilities(window);
    }
    /* A FIFO that the viewer holds, or opens when it comes to the batch, is kept. */
    bool held = viewer->batch_out || (viewer->fifo && atomic_load(&viewer->fifo->reader_mark) != 0);
    if (held && is_intact(viewer)) {
        viewer->may_be_lost = viewer->batch_out;
        viewer->lost_at = now_ns() + GRACE;
    } else {
        viewer->batch_out = viewer->may_be_lost = false;
        create_fifo(viewer);
        if (!viewer->fifo) {
            forget(viewer);
            return;
        }
    }
    viewer->overrun = viewer->overrun_told = false;
    viewer->limits_due = true;
    if (!viewer->connected) tell(viewer, "connected");
    viewer->connected = true;
}

static void disconnect_viewer(struct viewer* viewer) {
    uint64_t read = viewer->fifo ? atomic_load(&viewer->fifo->read_index) : 0;
    if (viewer->connected) tell(viewer, "disconnected");
    viewer->connected = viewer->overrun = viewer->overrun_told = false;
    if (!viewer->batch_out)
        remove_fifo(viewer);
    else if (read < FIFO_LINES) /* it may still open it: kept, but emptied; it reads nothing now */
        set_write_index(viewer, read);
    if (viewer->socket < 0) forget(viewer); /* nobody would tell that it is gone */
}

static void take_answer(struct viewer* viewer) {
    if (!viewer->batch_out) return;
    viewer->batch_out = viewer->may_be_lost = false;
    ++batches_answered;
    /* A disconnected viewer that holds its FIFO still will clear its mark without a word. */
    if (!viewer->connected && atomic_load(&viewer->fifo->reader_mark) == 0) remove_fifo(viewer);
    tend(viewer);
}

void on_message(const struct message* message) {
    uint64_t window = (uint64_t)message->l_param;
    struct viewer* viewer = window != 0 ? find_viewer(window) : NULL;
    if (message->number == LINK && message->w_param == CONNECT && window != 0)
        connect_viewer(window);
    else if (message->number == LINK && message->w_param == DISCONNECT && viewer)
        disconnect_viewer(viewer);
    else if (message->number == READY && viewer)
        take_answer(viewer);
    /* 0x52E and 0x52F need no care here: the modules of this master never change */
}

void on_refused(uint64_t window) {
    struct viewer* viewer = find_viewer(window);
    if (viewer) forget(viewer);
}

/* ---- the master ---- */

static void publish_lines(void) {
    int64_t start = now_ns(), number = 0;
    for (uint64_t angle_number = 0; end_requests == 0; tend_all(), window_serve(1)) {
        if (now_ns() - start > (number + FIFO_LINES / 2) * CYCLE) { /* it was stopped for long */
            start = now_ns();
            number = 0;
        }
        for (; start + number * CYCLE <= now_ns(); ++number, ++angle_number) {
            double angle = 2.0 * 3.14159265358979323846 * (double)(angle_number % 1000) / 1000.0;
            double line[AXES] = {100.0 * sin(angle), 100.0 * cos(angle)};
            for (int i = 0; i < MOST_VIEWERS; ++i) write_line(&viewers[i], line);
        }
    }
}

static bool all_is_taken(void) {
    for (int i = 0; i < MOST_VIEWERS; ++i)
        if (viewers[i].connected && !viewers[i].overrun &&
            (viewers[i].batch_out || lines_waiting(&viewers[i]) > 0))
            return false;
    return true;
}

/* No more lines now. The info block stays: a viewer that only opens its FIFO reads it again. */
static void wait_until_taken(void) {
    int64_t end = now_ns() + WAIT_AT_END;
    for (; !all_is_taken() && end_requests == 1 && now_ns() < end; tend_all()) window_serve(10);
}

int main(void) {
    struct sigaction action = {.sa_handler = request_end};
    const char* what;
    sigaction(SIGINT, &action, NULL);
    sigaction(SIGTERM, &action, NULL);
    own_window = window_open(&what);
    if (own_window == 0) fail(what);
    if (another_runs()) {
        window_close();
        errno = EEXIST;
        fail("another master");
    }
    remove_dead_segments();
    publish_info();
    window_tell_all(MASTER_IS_HERE);
    printf("sine_master: window %llu\n", (unsigned long long)own_window);
    fflush(stdout);
    publish_lines();
    wait_until_taken();
    shm_unlink("/MachineTools_InfoData"); /* nobody new finds this master */
    for (int i = 0; i < MOST_VIEWERS; ++i) {
        if (viewers[i].connected && reach(&viewers[i]))
            window_post(viewers[i].socket, VALUES, LINK_ENDED);
        if (viewers[i].window) forget(&viewers[i]);
    }
    window_close();
    printf("total: lines sent %llu, batches answered %llu, overruns %llu\n", lines_sent,
           batches_answered, overruns);
    return 0;
}
