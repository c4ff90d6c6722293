#include "net/socket_options.h"

#include <sys/socket.h>
#include <sys/time.h>

#include <cstdio>

int getSocketOption(int fd, int level, int name, const char* problem) {
    int value = 0;
    socklen_t size = sizeof value;
    if (getsockopt(fd, level, name, &value, &size) < 0) {
        std::perror(problem);
        return -1;
    }
    return value;
}

int setSocketOption(int fd, int level, int name, int value, const char* problem) {
    if (setsockopt(fd, level, name, &value, sizeof value) < 0) {
        std::perror(problem);
        return 0;
    }
    return 1;
}

int setReceiveTimeOut(int fd, long microseconds) {
    timeval limit{};
    limit.tv_usec = static_cast<decltype(limit.tv_usec)>(microseconds);
    if (setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit) < 0) {
        std::perror("setsockopt error\n");
        return 0;
    }
    return 1;
}
