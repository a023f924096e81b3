// The command line.
#pragma once

#include <variant>

#include "device/device.h"
#include "links/faults.h"

namespace zvr::sim {

struct Options {
    const Model* model = nullptr;
    Identity identity;
    NetworkSettings network;
    std::string host = "127.0.0.1";
    int port = 0;
    int dataPort = 0;
    bool discovery = false;
    bool tcp = false;  ///< for a USB model too
    std::string link;  ///< path of a symbolic link to the serial port; none if empty
    bool stopWithInput = false;
    bool verbose = false;
    double pace = 1;
    Signals signals;
    Peers peers;
    Tracks tracks;
    FaultOptions faults;
};

/// What the command line asks for: options, or an exit status after help or a refusal has been printed.
std::variant<Options, int> parseOptions(int argc, char** argv);

}  // namespace zvr::sim
