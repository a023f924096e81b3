#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <asio.hpp>
#include <charconv>
#include <iostream>
#include <stdexcept>

#include "links/steering.h"

namespace zvr::sim {

namespace {

template <class Number>
Number numberOf(std::string_view text, Number least, Number most) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !(number >= least && number <= most)) {
        throw std::invalid_argument("\"" + std::string(text) + "\" is not a number from " + std::to_string(least) +
                                    " to " + std::to_string(most));
    }
    return number;
}

double probabilityOf(std::string_view text) { return numberOf(text, 0.0, 1.0); }
std::size_t countOf(std::string_view text) { return numberOf<std::size_t>(text, 1, 1 << 24); }

// The texts go into JSON and onto the wire as they are.
std::string textOf(std::string_view text, std::size_t width) {
    const bool plain = std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
    if (!plain || text.size() > width) {
        throw std::invalid_argument("\"" + std::string(text) + "\" is not up to " + std::to_string(width) +
                                    " plain characters");
    }
    return std::string(text);
}

asio::ip::address_v4 addressOf(std::string_view text) {
    std::error_code error;
    auto address = asio::ip::make_address_v4(text, error);
    if (error) throw std::invalid_argument("\"" + std::string(text) + "\" is not an IPv4 address");
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
    throw std::invalid_argument("\"" + std::string(text) + "\" is not a MAC address");
}

// The device starts with the address that it listens on.
void setHost(Options& options, std::string_view text) {
    const auto address = addressOf(text);
    options.host = address.to_string();
    options.network.ip = address.to_bytes();
}

void addFaults(OptionGroup& group, FaultOptions& faults) {
    group.option("--drop", "P", "answer nothing", [&](auto v) { faults.drop = probabilityOf(v); });
    group.option("--duplicate", "P", "send the reply twice", [&](auto v) { faults.duplicate = probabilityOf(v); });
    group.option("--corrupt", "P", "change one byte of it", [&](auto v) { faults.corrupt = probabilityOf(v); });
    group.option("--truncate", "P", "send only its first half", [&](auto v) { faults.truncate = probabilityOf(v); });
    group.option("--delay", "SECONDS", "send it that much later",
                 [&](auto v) { faults.delay = numberOf(v, 0.0, 3600.0); });
    group.option("--split", "N", "send it in pieces of N bytes", [&](auto v) { faults.split = countOf(v); });
    group.option("--coalesce", "N", "hold replies until N are there, and send them at once",
                 [&](auto v) { faults.coalesce = countOf(v); });
    group.option("--flood", "N", "send N bytes of garbage before it", [&](auto v) { faults.flood = countOf(v); });
    group.option("--cut", "N", "end the connection after N replies", [&](auto v) { faults.cut = countOf(v); });
    group.option("--stall", "N", "answer nothing more after N replies",
                 [&](auto v) { faults.stall = numberOf<std::size_t>(v, 0, 1 << 24); });
    group.option("--fault-command", "C", "name or number of the only command that has faults",
                 [&](auto v) { faults.command = commandOf(v); });
}

}  // namespace

OptionGroup::OptionGroup(CLI::App& app, std::string name) : app_(app), name_(std::move(name)) {}

void OptionGroup::option(const char* name, const char* value, const char* help,
                         std::function<void(std::string_view)> set) {
    const CLI::callback_t setEach = [name, set = std::move(set)](const CLI::results_t& values) {
        try {
            for (const std::string& each : values) set(each);
        } catch (const std::invalid_argument& refusal) {
            throw CLI::ValidationError(name, refusal.what());
        }
        return true;
    };
    app_.add_option(name, setEach, help)
        ->group(name_)
        ->type_name(value)
        ->type_size(1)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void OptionGroup::flag(const char* name, bool& set, const char* help) { app_.add_flag(name, set, help)->group(name_); }

void addSignalOptions(CLI::App& app, Signals& signals, Peers& peers) {
    OptionGroup analog(app, "Analog inputs"), buses(app, "Serial buses");
    analog.option("--wave", "CHANNEL:KIND[:FREQUENCY[:AMPLITUDE[:OFFSET]]]",
                  "what is at a channel, 0 to 7, or * for all (sine of 10, 20 ... 80 Hz and 5 V): sine, ramp,\n"
                  "noise, constant, square, or count, which numbers the samples",
                  [&](auto v) { signals.set(v); });
    buses.option("--peer", "KIND@BUS:PORT[:ARGUMENT...]",
                 "what is on a bus, uart, i2c, spi or can, in place of what is there without the option:\n"
                 "none, eeprom@i2c, thermometer@i2c, flash@spi, loop@spi, loop@uart, echo@uart, gps@uart,\n"
                 "count@uart, cyclic@can or responder@can; --fast is for count and cyclic too",
                 [&](auto v) { peers.add(v); });
}

std::optional<int> parse(CLI::App& app, int argc, char** argv) {
    app.get_formatter()->label("Usage", "usage");
    app.get_formatter()->column_width(22);
    app.set_help_flag("--help", "show this");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success&) {
        std::cout << app.help();
        return 0;
    } catch (const CLI::ParseError& refusal) {
        std::cerr << app.get_name() << ": " << refusal.what() << '\n';
        return 2;
    }
    return std::nullopt;
}

std::variant<Options, int> parseOptions(int argc, char** argv) {
    CLI::App app(
        "The device side of a model, for trying and testing without hardware. It prints one line of JSON with its\n"
        "address and serves until SIGTERM or SIGINT.",
        "zvr-sim");
    Options options;
    app.footer(std::string("Lines on standard input change what there is; each is answered by a line of JSON:\n") +
               "  cut                      end all connections; a serial line falls silent until its next client\n" +
               steeringHelp);
    std::string model;
    bool list = false, table = false;
    app.add_option("MODEL", model, "--list tells which there are")->type_name("");
    OptionGroup general(app, "Options"), faults(app, "Faults of the replies; P is a probability from 0 to 1"),
        analog(app, "Analog inputs"), axes(app, "Axes");
    general.option("--host", "ADDRESS", "local IPv4 address to listen on (127.0.0.1)",
                   [&](auto v) { setHost(options, v); });
    general.option("--port", "N", "TCP port of the commands; 0 takes a free one (0)",
                   [&](auto v) { options.port = numberOf(v, 0, 65535); });
    general.option("--data-port", "N", "TCP port of the streamed data, on Wi-Fi models; 0 takes a free one (0)",
                   [&](auto v) { options.dataPort = numberOf(v, 0, 65535); });
    general.flag("--tcp", options.tcp, "serve the frames of a USB model over TCP");
    general.flag("--discovery", options.discovery, "answer broadcast requests on UDP port 61557; not on serial models");
    general.option("--link", "PATH", "make a symbolic link to the serial port, on serial models",
                   [&](auto v) { options.link = v; });
    general.option("--mac", "ADDRESS", "MAC address that the device starts with (02:0a:5a:00:00:01)",
                   [&](auto v) { options.network.mac = macOf(v); });
    general.option("--serial", "TEXT", "serial number, up to 8 characters (SIM00001)",
                   [&](auto v) { options.identity.serial = textOf(v, 8); });
    general.option("--alias", "TEXT", "device alias, up to 16 characters (bench)",
                   [&](auto v) { options.identity.alias = textOf(v, 16); });
    general.option("--pace", "FACTOR", "what flies or sways does so that many times faster, 0.001 to 1000 (1)",
                   [&](auto v) { options.pace = numberOf(v, 0.001, 1000.0); });
    general.option("--seed", "N", "start of the random numbers (1)",
                   [&](auto v) { options.faults.seed = options.signals.seed = numberOf(v, 0U, 0xFFFFFFFFU); });
    general.flag("--stdin-stop", options.stopWithInput, "stop when standard input closes");
    general.flag("--verbose", options.verbose, "log every exchange on standard error");
    general.flag("--list", list, "list the models");
    general.flag("--table", table, "print all that is true of the models, as JSON");
    addFaults(faults, options.faults);
    addSignalOptions(app, options.signals, options.peers);
    analog.flag("--fast", options.signals.fast, "sample as fast as the clients take it");
    analog.option("--frame-rows", "N", "rows of a data frame (those of 5 ms; with --fast 8 KB)",
                  [&](auto v) { options.signals.frameRows = countOf(v); });
    axes.option("--axis", "AXIS:HOME[:REVERSE[:FORWARD[:REVOLUTION[:ALARM]]]]",
                "where the switches of an axis are, 0 to 3, or * for all, in pulses from its start (-20000,\n"
                "-1000000, 1000000), how many pulses a turn has (4000), and how far it is to a jam (none)",
                [&](auto v) { options.tracks.set(v); });

    if (const std::optional<int> status = parse(app, argc, argv)) return *status;
    if (list) {
        for (const Model& each : models()) std::cout << each.name << '\t' << each.displayName << '\n';
        return 0;
    }
    if (table) {
        printTable(std::cout);
        return 0;
    }
    options.model = findModel(model);
    if (options.model != nullptr) return options;
    std::cerr << "zvr-sim: "
              << (model.empty() ? "one MODEL is wanted; --list tells which there are" : "no model is called " + model)
              << '\n';
    return 2;
}

}  // namespace zvr::sim
