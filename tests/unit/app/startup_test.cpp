#include "app/startup.h"

#include <gtest/gtest.h>

#include "base/state.h"
#include "net/udp_socket.h"

namespace {

TEST(StartUp, OpensTheControlSocketForTheWholeSite) {
    openControlSocket(true);
    UDPSocket* const socket = KvmSetSocket;
    ASSERT_NE(socket, nullptr);
    EXPECT_EQ(socket->GetMulticastTTL(), 64);
    EXPECT_EQ(socket->SendTo("127.0.0.1", 41236, "here", 4), 4);
    std::array<char, 8> text{};
    EXPECT_EQ(socket->RecvFrom(text.data(), 8), 4);
}

}  // namespace
