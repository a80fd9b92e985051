/*
 * Windows on POSIX systems, as docs/master-protocol.md describes them: the one window of this
 * program, and connections to windows of others. One thread; nothing here waits but window_serve.
 */
#pragma once

#include <stdbool.h>
#include <stdint.h>

#define LARGEST_WINDOW 0x7FFFFFFFu

struct message {
    uint32_t number;
    uint64_t w_param;
    int64_t l_param;
};

/* What the program brings: it is told of each message, posted or sent, ... */
void on_message(const struct message* message);
/* ... and of a window whose process wrote what is no packet. Its connection is being closed, which
 * it takes for the end of our window. */
void on_refused(uint64_t window);

/* Makes the window and removes those that dead processes have left. Returns its number; or 0, and
 * errno and *what tell why. */
uint64_t window_open(const char** what);
void window_close(void);

/* Posts a message to every other window that can be found now; one that is busy is left out. */
void window_tell_all(uint32_t number);

/* Waits up to so many milliseconds for messages and handles them. */
void window_serve(int milliseconds);

/* Whether this window is there now. One that is too busy to accept a connection is. */
bool window_exists(uint64_t window);

/* A connection to a window, to be closed with close(). Or -1: errno is ENOENT or ECONNREFUSED when
 * there is no such window, EAGAIN when it is busy. */
int window_connect(uint64_t window);

/* False: the message was not taken; to be tried again, if the window is there. */
bool window_post(int connection, uint32_t number, uint64_t w_param);

/* Whether the window at the other end is gone. */
bool window_is_gone(int connection);
