#include "app/user_list.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

#include "base/file_start.h"
#include "base/state.h"
#include "base/text.h"

UserList parseUserList(std::string_view text) {
    std::vector<std::string> lines;
    SplitString(std::string(text), lines, "\r\n");
    UserList list;
    bool inGroup = false;
    for (std::string& line : lines) {
        if (!inGroup) {
            inGroup = line == "IP{";
        } else if (line.empty()) {
            throw UnusableUserList();
        } else if (line[0] == '}') {
            inGroup = false;
        } else if (!AddressText::fits(line)) {
            list.tooLong.push_back(std::move(line));
        } else {
            list.addresses.emplace_back(line);
        }
    }
    return list;
}

void loadUserList() {
    constexpr const char* kPath = "./ip.txt";
    if (access(kPath, F_OK) != 0) {
        return;
    }
    user_n = 0;
    const FileText file = readFileStart(kPath, kUserListBytes + 1);
    if (file.state != FileState::kRead) {
        std::puts("fopen ip.txt error");
        return;
    }
    if (file.text.size() > kUserListBytes) {
        std::puts("ip.txt error");
        return;
    }
    UserList list = parseUserList(file.text.c_str());
    for (const std::string& address : list.tooLong) {
        std::printf("ip.txt: address of %zu characters left out: %s\n", address.size(),
                    address.c_str());
    }
    user_ip = std::move(list.addresses);
    user_n = static_cast<std::int32_t>(user_ip.size());
}
