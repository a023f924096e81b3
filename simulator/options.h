// The command line.
#pragma once

#include <variant>

#include "device/device.h"
#include "links/faults.h"

namespace CLI {
class App;
}

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

/// Options of one heading of the help.
class OptionGroup {
public:
    OptionGroup(CLI::App& app, std::string name);
    /// `set` is called for each time that the option is given; it refuses a value by std::invalid_argument.
    void option(const char* name, const char* value, const char* help, std::function<void(std::string_view)> set);
    void flag(const char* name, bool& set, const char* help);

private:
    CLI::App& app_;
    std::string name_;
};

/// The options about what is at the lines of a device.
void addSignalOptions(CLI::App& app, Signals& signals, Peers& peers);

/// An exit status after help or a refusal has been printed.
std::optional<int> parse(CLI::App& app, int argc, char** argv);

/// Parses the command line; returns options, or an exit status after help or a refusal has been printed.
std::variant<Options, int> parseOptions(int argc, char** argv);

}  // namespace zvr::sim
