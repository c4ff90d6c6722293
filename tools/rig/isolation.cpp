#include "rig/isolation.h"

#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace rig {
namespace {

bool loopbackUp() {
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        return false;
    }
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    bool up = ioctl(fd, SIOCGIFFLAGS, &request) == 0;
    request.ifr_flags = static_cast<short>(request.ifr_flags | IFF_UP);
    up = up && ioctl(fd, SIOCSIFFLAGS, &request) == 0;
    close(fd);
    return up;
}

/// In a fresh user namespace: the caller becomes its root, which keeps the names of files readable.
void mapUser(uid_t user, gid_t group) {
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " + std::to_string(user) + " 1";
    std::ofstream("/proc/self/gid_map") << "0 " + std::to_string(group) + " 1";
}

}  // namespace

bool enterOwnNetwork() {
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (unshare(CLONE_NEWNET) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
            return false;
        }
        mapUser(user, group);
    }
    if (!loopbackUp()) {
        // The old network is out of reach by now, and the new one is of no use.
        std::perror("rig: loopback of the new network namespace");
        std::exit(1);
    }
    return true;
}

bool ownEveryAddress() {
    struct {
        nlmsghdr head;
        rtmsg route;
        rtattr attribute;
        unsigned interface;
    } request{};
    request.head = {sizeof(request), RTM_NEWROUTE, NLM_F_REQUEST | NLM_F_CREATE | NLM_F_ACK, 0, 0};
    request.route.rtm_family = AF_INET;
    request.route.rtm_table = RT_TABLE_LOCAL;
    request.route.rtm_protocol = RTPROT_BOOT;
    request.route.rtm_scope = RT_SCOPE_HOST;
    request.route.rtm_type = RTN_LOCAL;
    request.attribute = {RTA_LENGTH(sizeof(unsigned)), RTA_OIF};
    request.interface = if_nametoindex("lo");
    const int fd = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
    struct {
        nlmsghdr head;
        nlmsgerr error;
    } answer{};
    const bool isTaken = fd >= 0 && send(fd, &request, sizeof(request), 0) == sizeof(request) &&
                         recv(fd, &answer, sizeof(answer), MSG_TRUNC) > 0 &&
                         answer.head.nlmsg_type == NLMSG_ERROR && answer.error.error == 0;
    close(fd);
    return isTaken;
}

}  // namespace rig
