#pragma once

#include <optional>
#include <string>

#include "base/address_text.h"
#include "remote/box_in_control.h"

class UDPSocket;

/// One answer to a "link" request: its first 64 bytes as text, up to the first NUL.
struct BoxAnswer {
    BoxInControl asked;
    AddressText sender;  ///< who answered
    int port = 0;        ///< the sender's port, host order
    std::string text;

    const AddressText& box() const { return asked.curIp; }
    bool isFromBox() const { return sender == asked.curIp; }
};

/// Drains `socket`, asks the box in control and waits for one answer, as long as the socket's
/// receive waits. Nothing when no answer came; a box of "0.0.0.0" is not asked. Any thread.
std::optional<BoxAnswer> askBox(UDPSocket& socket);
