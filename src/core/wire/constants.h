// Numbers of the protocol and of the request engine that are part of the interface.
#pragma once

namespace zvr {

// Framing. The sending and the receiving half name the same values.
inline constexpr int CMD_INDEX = 3, CMD_STX = 2, CMD_CR = 13, CMD_LF = 10;
inline constexpr int CMD_INDEX_2 = CMD_INDEX, CMD_STX_2 = CMD_STX, CMD_CR_2 = CMD_CR, CMD_LF_2 = CMD_LF;

// Bytes requested in one read; they limit a read, not a frame.
inline constexpr int USB_PKT_SIZE = 64, TCP_PKT_LENGTH_MAX = 1536, TCP_DATA_LENGTH_MAX = 9606, UDP_PKT_LENGTH_MAX = 512,
                     UART_PKT_LENGTH_MAX = 64;

// The USB devices: vendor, product, endpoints; and the multimeter, which is read as a HID device.
inline constexpr int USB_VID = 1155, USB_PID = 22352, USB_EP_IN = 129, USB_EP_OUT = 1;
inline constexpr int USB_61E_PLUS_VID = 4292, USB_61E_PLUS_PID = 60032, USB_61E_RECEIVE_BYTE = 2,
                     USB_61E_RECEIVE_TIMEOUT = 200, USB_61E_RECEIVE_TOTAL_BYTES = 19;

/// Read timeout of a serial line, in seconds.
inline constexpr double UART_READ_TIMEOUT = 0.05;

// Ports and seconds of the network devices.
inline constexpr int TCP_CMD_PORT = 7, TCP_DATA_PORT = 1336, UDP_SEND_PORT = 61557, UDP_RECV_PORT = 6667;
inline constexpr int CONNECTION_TIMEOUT = 5;

// Waits of the request engine, in seconds, and its counts.
inline constexpr double ECHO_DELAY = 0.01;
inline constexpr int PACKET_TIMEOUT = 5, RETRY_TIMEOUT = 1, NUM_RETRIES = 3, NUM_BCST_RETRIES = 3;
inline constexpr int QUEUE_SIZE_MAX = 1000000, QUEUE_TIMEOUT = 999999;

/// Seconds that one quick attempt of the blocking exchange waits for its reply.
inline constexpr double QUICK_TRY = 0.01;

inline constexpr const char* LIBRARY_VERSION = "3.2.6";  ///< of the interface; the package has its own

}  // namespace zvr
