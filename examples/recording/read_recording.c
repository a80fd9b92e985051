/* Prints the lines of a Wavo recording as CSV, and its events on standard error.
 *
 *     cc -O2 -o read_recording read_recording.c
 *     ./read_recording FILE.mcap
 *
 * Reads record by record, so that files of any size do, and those that were cut off. CRCs are not
 * checked here: `wavo_record --verify FILE` does that. */
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static uint64_t number(const unsigned char* from, int bytes) {
    uint64_t value = 0;
    for (int i = bytes; i > 0; --i) {
        value = value << 8 | from[i - 1];
    }
    return value;
}

/* A text with its length in front, at *from: its length; *from is moved to its first byte. */
static uint32_t text(const unsigned char** from, const unsigned char* end) {
    uint32_t size = end - *from < 4 ? 0 : (uint32_t)number(*from, 4);
    *from += 4;
    return size <= end - *from ? size : 0;
}

/* Channels of lines and of events. */
static long lines_channel = -1;
static long events_channel = -1;

static void take_channel(const unsigned char* at, const unsigned char* end) {
    const long id = (long)number(at, 2);
    at += 4;
    const uint32_t size = text(&at, end);
    if (size == 5 && memcmp(at, "lines", 5) == 0) {
        lines_channel = id;
    } else if (size == 6 && memcmp(at, "events", 6) == 0) {
        events_channel = id;
    }
}

static void take_message(const unsigned char* message, const unsigned char* end) {
    const long channel = (long)number(message, 2);
    if (channel == events_channel) {
        fprintf(stderr, "event: %.*s\n", (int)(end - message - 22), (const char*)message + 22);
    } else if (channel == lines_channel) {
        printf("%" PRIu64 ",%" PRIu64, number(message + 2, 4), number(message + 6, 8));
        for (const unsigned char* at = message + 26; end - at >= 8; at += 8) {
            double value;
            memcpy(&value, at, 8); /* on a little-endian machine */
            printf(",%.17g", value);
        }
        printf("\n");
    }
}

static void take_chunk(const unsigned char* at, const unsigned char* end) {
    at += 28; /* times, size, CRC */
    if (text(&at, end) != 0) {
        fprintf(stderr, "a chunk is compressed and left out\n");
        return;
    }
    at += 8;
    while (end - at >= 9) {
        const uint64_t size = number(at + 1, 8);
        if (size > (uint64_t)(end - at - 9)) {
            return;
        }
        if (at[0] == 0x05 && size >= 22) {
            take_message(at + 9, at + 9 + size);
        }
        at += 9 + size;
    }
}

/* The axis names are a list in JSON; quotes within names stay as they are escaped there. */
static void take_metadata(const unsigned char* at, const unsigned char* end) {
    const uint32_t name = text(&at, end);
    if (name != 4 || memcmp(at, "wavo", 4) != 0) {
        return;
    }
    at += name + 4;
    while (at < end) {
        const uint32_t key_size = text(&at, end);
        const unsigned char* const key = at;
        at += key_size;
        const uint32_t size = text(&at, end);
        if (key_size == 4 && memcmp(key, "axes", 4) == 0 && size >= 2) {
            printf("line,time_ns,%.*s\n", (int)size - 2, (const char*)at + 1);
        }
        at += size;
    }
}

int main(int argc, char** argv) {
    unsigned char head[9];
    unsigned char* content = NULL;
    FILE* const file = argc == 2 ? fopen(argv[1], "rb") : NULL;
    if (file == NULL || fread(head, 1, 8, file) != 8 || memcmp(head, "\x89MCAP0\r\n", 8) != 0) {
        fprintf(stderr, "usage: read_recording FILE.mcap\n");
        return 1;
    }
    while (fread(head, 1, 9, file) == 9 && head[0] != 0x0F && head[0] != 0) {
        const uint64_t size = number(head + 1, 8);
        if (head[0] != 0x04 && head[0] != 0x06 && head[0] != 0x0C) {
            /* Not needed here. */
            uint64_t left = size;
            for (; left > 0x40000000; left -= 0x40000000) {
                fseek(file, 0x40000000, SEEK_CUR);
            }
            fseek(file, (long)left, SEEK_CUR);
            continue;
        }
        unsigned char* const larger = size < 0x10000000 ? realloc(content, size + 1) : NULL;
        if (larger == NULL) {
            break;
        }
        content = larger;
        if (fread(content, 1, size, file) != size) {
            break; /* cut off */
        }
        if (head[0] == 0x04) {
            take_channel(content, content + size);
        } else if (head[0] == 0x06) {
            take_chunk(content, content + size);
        } else {
            take_metadata(content, content + size);
        }
    }
    free(content);
    fclose(file);
    return 0;
}
