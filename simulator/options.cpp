#include "options.h"

#include <getopt.h>

#include <algorithm>
#include <asio.hpp>
#include <charconv>
#include <iostream>
#include <stdexcept>

namespace zvr::sim {

namespace {

constexpr const char* usage = R"(usage: zvr-sim MODEL [options]

The device side of a model, for trying and testing without hardware. It prints one line of JSON with its address and
serves until SIGTERM or SIGINT.

  --host ADDRESS     local IPv4 address to listen on (127.0.0.1)
  --port N           TCP port of the commands; 0 takes a free one (0)
  --data-port N      TCP port of the streamed data, on Wi-Fi models; 0 takes a free one (0)
  --tcp              serve the frames of a USB model over TCP
  --discovery        answer broadcast requests on UDP port 61557; not on serial models
  --link PATH        make a symbolic link to the serial port, on serial models
  --mac ADDRESS      MAC address that the device starts with (02:0a:5a:00:00:01)
  --serial TEXT      serial number, up to 8 characters (SIM00001)
  --alias TEXT       device alias, up to 16 characters (bench)
  --pace FACTOR      what flies or sways does so that many times faster, 0.001 to 1000 (1)
  --stdin-stop       stop when standard input closes
  --verbose          log every exchange on standard error
  --list             list the models
  --table            print all that is true of the models, as JSON

Faults of the replies; P is a probability from 0 to 1:
  --drop P           answer nothing
  --duplicate P      send the reply twice
  --corrupt P        change one byte of it
  --truncate P       send only its first half
  --delay SECONDS    send it that much later
  --split N          send it in pieces of N bytes
  --coalesce N       hold replies until N are there, and send them at once
  --flood N          send N bytes of garbage before it
  --cut N            end the connection after N replies
  --stall N          answer nothing more after N replies
  --fault-command C  name or number of the only command that has faults
  --seed N           start of the random numbers (1)

Analog inputs:
  --wave CHANNEL:KIND[:FREQUENCY[:AMPLITUDE[:OFFSET]]]
                     what is at a channel, 0 to 7, or * for all (sine of 10, 20 ... 80 Hz and 5 V): sine, ramp,
                     noise, constant, square, or count, which numbers the samples
  --fast             sample as fast as the clients take it
  --frame-rows N     rows of a data frame (those of 5 ms; with --fast 8 KB)

Serial buses:
  --peer KIND@BUS:PORT[:ARGUMENT...]
                     what is on a bus, uart, i2c, spi or can, in place of what is there without the option:
                     none, eeprom@i2c, thermometer@i2c, flash@spi, loop@spi, loop@uart, echo@uart, gps@uart, count@uart,
                     cyclic@can or responder@can; --fast is for count and cyclic too
Axes:
  --axis AXIS:HOME[:REVERSE[:FORWARD[:REVOLUTION[:ALARM]]]]
                     where the switches of an axis are, 0 to 3, or * for all, in pulses from its start (-20000,
                     -1000000, 1000000), how many pulses a turn has (4000), and how far it is to a jam (none)
)";

struct BadOption : std::invalid_argument {
    using std::invalid_argument::invalid_argument;
};

template <class Number>
Number numberOf(std::string_view text, Number least, Number most) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !(number >= least && number <= most)) {
        throw BadOption("\"" + std::string(text) + "\" is not a number from " + std::to_string(least) + " to " +
                        std::to_string(most));
    }
    return number;
}

double probabilityOf(std::string_view text) { return numberOf(text, 0.0, 1.0); }
std::size_t countOf(std::string_view text) { return numberOf<std::size_t>(text, 1, 1 << 24); }

// The texts go into JSON and onto the wire as they are.
std::string textOf(std::string_view text, std::size_t width) {
    const bool plain = std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
    if (!plain || text.size() > width) {
        throw BadOption("\"" + std::string(text) + "\" is not up to " + std::to_string(width) + " plain characters");
    }
    return std::string(text);
}

asio::ip::address_v4 addressOf(std::string_view text) {
    std::error_code error;
    auto address = asio::ip::make_address_v4(text, error);
    if (error) throw BadOption("\"" + std::string(text) + "\" is not an IPv4 address");
    return address;
}

std::array<std::uint8_t, 6> macOf(std::string_view text) {
    std::array<std::uint8_t, 6> mac{};
    const char* next = text.data();
    const char* const end = text.data() + text.size();
    for (std::size_t i = 0; i < mac.size(); ++i) {
        if (i != 0 && (next == end || *next++ != ':')) break;
        const auto [behind, error] = std::from_chars(next, end, mac[i], 16);
        if (error != std::errc()) break;
        next = behind;
        if (i + 1 == mac.size() && next == end) return mac;
    }
    throw BadOption("\"" + std::string(text) + "\" is not a MAC address");
}

// The device starts with the address that it listens on.
void setHost(Options& options, std::string_view text) {
    const auto address = addressOf(text);
    options.host = address.to_string();
    options.network.ip = address.to_bytes();
}

int commandOf(std::string_view text) {
    const auto found = std::ranges::find(commandTable(), text, &CommandName::name);
    return found != commandTable().end() ? found->code : numberOf(text, 0, 0xFFFF);
}

struct Option {
    const char* name;
    bool takesValue;
    void (*set)(Options& options, std::string_view value);
};

constexpr Option table[] = {
    {"host", true, setHost},
    {"port", true, [](Options& o, std::string_view v) { o.port = numberOf(v, 0, 65535); }},
    {"data-port", true, [](Options& o, std::string_view v) { o.dataPort = numberOf(v, 0, 65535); }},
    {"discovery", false, [](Options& o, std::string_view) { o.discovery = true; }},
    {"link", true, [](Options& o, std::string_view v) { o.link = v; }},
    {"mac", true, [](Options& o, std::string_view v) { o.network.mac = macOf(v); }},
    {"serial", true, [](Options& o, std::string_view v) { o.identity.serial = textOf(v, 8); }},
    {"alias", true, [](Options& o, std::string_view v) { o.identity.alias = textOf(v, 16); }},
    {"pace", true, [](Options& o, std::string_view v) { o.pace = numberOf(v, 0.001, 1000.0); }},
    {"stdin-stop", false, [](Options& o, std::string_view) { o.stopWithInput = true; }},
    {"verbose", false, [](Options& o, std::string_view) { o.verbose = true; }},
    {"drop", true, [](Options& o, std::string_view v) { o.faults.drop = probabilityOf(v); }},
    {"duplicate", true, [](Options& o, std::string_view v) { o.faults.duplicate = probabilityOf(v); }},
    {"corrupt", true, [](Options& o, std::string_view v) { o.faults.corrupt = probabilityOf(v); }},
    {"truncate", true, [](Options& o, std::string_view v) { o.faults.truncate = probabilityOf(v); }},
    {"delay", true, [](Options& o, std::string_view v) { o.faults.delay = numberOf(v, 0.0, 3600.0); }},
    {"split", true, [](Options& o, std::string_view v) { o.faults.split = countOf(v); }},
    {"coalesce", true, [](Options& o, std::string_view v) { o.faults.coalesce = countOf(v); }},
    {"flood", true, [](Options& o, std::string_view v) { o.faults.flood = countOf(v); }},
    {"cut", true, [](Options& o, std::string_view v) { o.faults.cut = countOf(v); }},
    {"stall", true, [](Options& o, std::string_view v) { o.faults.stall = numberOf<std::size_t>(v, 0, 1 << 24); }},
    {"fault-command", true, [](Options& o, std::string_view v) { o.faults.command = commandOf(v); }},
    {"seed", true,
     [](Options& o, std::string_view v) { o.faults.seed = o.signals.seed = numberOf(v, 0U, 0xFFFFFFFFU); }},
    {"wave", true, [](Options& o, std::string_view v) { o.signals.set(v); }},
    {"peer", true, [](Options& o, std::string_view v) { o.peers.add(v); }},
    {"tcp", false, [](Options& o, std::string_view) { o.tcp = true; }},
    {"axis", true, [](Options& o, std::string_view v) { o.tracks.set(v); }},
    {"fast", false, [](Options& o, std::string_view) { o.signals.fast = true; }},
    {"frame-rows", true, [](Options& o, std::string_view v) { o.signals.frameRows = countOf(v); }},
};

}  // namespace

std::variant<Options, int> parseOptions(int argc, char** argv) {
    constexpr int help = 1000, list = 1001, rows = 1002;
    std::vector<option> known;
    for (int i = 0; const Option& entry : table) {
        known.push_back({entry.name, entry.takesValue ? required_argument : no_argument, nullptr, i++});
    }
    known.push_back({"help", no_argument, nullptr, help});
    known.push_back({"list", no_argument, nullptr, list});
    known.push_back({"table", no_argument, nullptr, rows});
    known.push_back({nullptr, 0, nullptr, 0});

    Options options;
    try {
        for (int chosen; (chosen = getopt_long(argc, argv, "", known.data(), nullptr)) != -1;) {
            if (chosen == '?') return 2;
            if (chosen == help) {
                std::cout << usage;
                return 0;
            }
            if (chosen == list) {
                for (const Model& model : models()) std::cout << model.name << '\t' << model.displayName << '\n';
                return 0;
            }
            if (chosen == rows) {
                printTable(std::cout);
                return 0;
            }
            const Option& entry = table[chosen];
            try {
                entry.set(options, optarg != nullptr ? optarg : "");
            } catch (const std::invalid_argument& refusal) {
                throw BadOption(std::string("--") + entry.name + ": " + refusal.what());
            }
        }
        if (optind + 1 != argc) throw BadOption("one MODEL is wanted; --list tells which there are");
        options.model = findModel(argv[optind]);
        if (options.model == nullptr) throw BadOption(std::string("no model is called ") + argv[optind]);
    } catch (const BadOption& refusal) {
        std::cerr << "zvr-sim: " << refusal.what() << '\n';
        return 2;
    }
    return options;
}

}  // namespace zvr::sim
