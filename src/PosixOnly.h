#pragma once

// Included first into every C++ file of the build (see CMakeLists.txt). The program runs
// on macOS, where Linux's own system calls don't exist; poisoning them here makes any
// use of one a compile error on Linux too, so it is caught before it reaches a Mac.
//
// The system headers that declare them come first: a poisoned name may not even be
// declared afterwards, and their include guards keep later includes from doing so.
#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

// Names the calling thread, as a debugger or a process listing shows it. The one call
// whose shape differs between the systems: one argument on macOS, two on Linux.
inline void kkNameThisThread(const char *name) {
#if defined(__APPLE__)
    pthread_setname_np(name);
#elif defined(__linux__)
    pthread_setname_np(pthread_self(), name);
#else
    (void)name;
#endif
}

#pragma GCC poison pipe2 dup3 accept4 gettid pthread_setname_np prctl
#pragma GCC poison epoll_create epoll_create1 epoll_ctl epoll_wait inotify_init inotify_init1
#pragma GCC poison memfd_create eventfd signalfd timerfd_create sendfile getrandom
#pragma GCC poison close_range copy_file_range statx syncfs
