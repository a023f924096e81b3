#include "core/wire/constants.h"

#include "core/wire/commands.h"
#include "device/protocol.h"

namespace zvr::python {

namespace {

template <class Codes>
py::list listOf(const Codes& codes) {
    py::list list;
    for (const int code : codes) list.append(code);
    return list;
}

}  // namespace

void defineConstants(Package& package) {
    for (const auto& [name, code] : commandTable()) package.constant(name.data(), code);
    package.constant("STREAMING_CMD_LIST", listOf(streamingCommands));
    package.constant("BROADCAST_CMD_LIST", listOf(broadcastCommands));

#define ZVR_CONSTANT(name) package.constant(#name, name)
    ZVR_CONSTANT(CMD_INDEX);
    ZVR_CONSTANT(CMD_STX);
    ZVR_CONSTANT(CMD_CR);
    ZVR_CONSTANT(CMD_LF);
    ZVR_CONSTANT(CMD_INDEX_2);
    ZVR_CONSTANT(CMD_STX_2);
    ZVR_CONSTANT(CMD_CR_2);
    ZVR_CONSTANT(CMD_LF_2);
    ZVR_CONSTANT(USB_PKT_SIZE);
    ZVR_CONSTANT(TCP_PKT_LENGTH_MAX);
    ZVR_CONSTANT(TCP_DATA_LENGTH_MAX);
    ZVR_CONSTANT(UDP_PKT_LENGTH_MAX);
    ZVR_CONSTANT(UART_PKT_LENGTH_MAX);
    ZVR_CONSTANT(USB_VID);
    ZVR_CONSTANT(USB_PID);
    ZVR_CONSTANT(USB_EP_IN);
    ZVR_CONSTANT(USB_EP_OUT);
    ZVR_CONSTANT(USB_61E_PLUS_VID);
    ZVR_CONSTANT(USB_61E_PLUS_PID);
    ZVR_CONSTANT(USB_61E_RECEIVE_BYTE);
    ZVR_CONSTANT(USB_61E_RECEIVE_TIMEOUT);
    ZVR_CONSTANT(USB_61E_RECEIVE_TOTAL_BYTES);
    ZVR_CONSTANT(TCP_CMD_PORT);
    ZVR_CONSTANT(TCP_DATA_PORT);
    ZVR_CONSTANT(UDP_SEND_PORT);
    ZVR_CONSTANT(UDP_RECV_PORT);
    ZVR_CONSTANT(CONNECTION_TIMEOUT);
    ZVR_CONSTANT(PACKET_TIMEOUT);
    ZVR_CONSTANT(RETRY_TIMEOUT);
    ZVR_CONSTANT(NUM_RETRIES);
    ZVR_CONSTANT(NUM_BCST_RETRIES);
    ZVR_CONSTANT(QUEUE_SIZE_MAX);
    ZVR_CONSTANT(QUEUE_TIMEOUT);
#undef ZVR_CONSTANT
    package.constant("ECHO_DELAY", py::float_(ECHO_DELAY));
    package.constant("UART_READ_TIMEOUT", py::float_(UART_READ_TIMEOUT));
    package.constant("__version__", py::str(LIBRARY_VERSION));
}

}  // namespace zvr::python
