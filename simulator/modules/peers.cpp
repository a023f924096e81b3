#include "modules/peers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>
#include <string>

#include "device/fields.h"

namespace zvr::sim {

namespace {

constexpr std::array<std::string_view, 4> busNames = {"uart", "i2c", "spi", "can"};

struct Argument {
    std::string_view name;
    double least, most, usual;
};

struct Kind {
    PeerKind kind;
    std::string_view name;
    std::vector<Bus> buses;
    std::vector<Argument> arguments;
};

const std::vector<Kind>& kinds() {
    // The bit rate of a node on a CAN bus is a speed of the port, or -1, that which the port has.
    static const Argument baudRate{"BAUD", 0, 400000, 0}, speed{"SPEED", -1, 3, -1};
    static const std::vector<Kind> table = {
        {PeerKind::none, "none", {Bus::uart, Bus::i2c, Bus::spi, Bus::can}, {}},
        {PeerKind::eeprom, "eeprom", {Bus::i2c}, {{"ADDRESS", 0, 127, 0x50}}},
        {PeerKind::thermometer, "thermometer", {Bus::i2c}, {{"ADDRESS", 0, 127, 0x48}, {"DEGREES", -50, 120, 25}}},
        {PeerKind::flash, "flash", {Bus::spi}, {}},
        {PeerKind::loop, "loop", {Bus::uart, Bus::spi}, {}},
        {PeerKind::echo, "echo", {Bus::uart}, {baudRate}},
        {PeerKind::gps, "gps", {Bus::uart}, {{"RATE", 0.01, 100, 1}, baudRate}},
        {PeerKind::count, "count", {Bus::uart}, {baudRate}},
        {PeerKind::cyclic, "cyclic", {Bus::can}, {{"RATE", 0.01, 1e6, 10}, {"ID", 0, 0x1FFFFFFF, 0x100}, speed}},
        {PeerKind::responder, "responder", {Bus::can}, {speed}},
    };
    return table;
}

// Decimal, or hexadecimal behind 0x.
double valueOf(std::string_view text, const Argument& argument) {
    double value = 0;
    std::from_chars_result got{};
    const char* const end = text.data() + text.size();
    if (text.starts_with("0x")) {
        std::uint32_t number = 0;
        got = std::from_chars(text.data() + 2, end, number, 16);
        value = number;
    } else {
        got = std::from_chars(text.data(), end, value);
    }
    if (got.ec != std::errc() || got.ptr != end || !(value >= argument.least && value <= argument.most)) {
        throw std::invalid_argument("\"" + std::string(text) + "\" is no " + std::string(argument.name));
    }
    return value;
}

Peer peerOf(std::string_view text) {
    const std::size_t mark = text.find('@');
    const auto parts = partsOf(text.substr(mark == std::string_view::npos ? text.size() : mark + 1));
    if (parts.size() < 2) {
        throw std::invalid_argument("\"" + std::string(text) + "\" is not KIND@BUS:PORT[:ARGUMENT...]");
    }
    const std::string name(text.substr(0, mark));
    const auto kind = std::ranges::find(kinds(), name, &Kind::name);
    if (kind == kinds().end()) throw std::invalid_argument("\"" + name + "\" is no kind of peer");
    const auto busName = std::ranges::find(busNames, parts[0]);
    const auto bus = static_cast<Bus>(busName - busNames.begin());
    const auto port = static_cast<int>(valueOf(parts[1], {"PORT", 1, 2, 1}));
    if (std::ranges::find(kind->buses, bus) == kind->buses.end()) {
        throw std::invalid_argument("there is no " + name + " on \"" + std::string(parts[0]) + "\"");
    }
    if (parts.size() - 2 > kind->arguments.size()) throw std::invalid_argument("too many arguments for " + name);
    Peer peer{kind->kind, bus, port, {}};
    for (std::size_t i = 0; i < kind->arguments.size(); ++i) {
        const Argument& argument = kind->arguments[i];
        peer.arguments.push_back(i + 2 < parts.size() ? valueOf(parts[i + 2], argument) : argument.usual);
    }
    return peer;
}

bool isAt(const Peer& peer, Bus bus, int port) { return peer.bus == bus && peer.port == port; }

}  // namespace

Peers::Peers() {
    for (const char* text : {"loop@uart:1", "gps@uart:2", "eeprom@i2c:1", "thermometer@i2c:1", "eeprom@i2c:2",
                             "thermometer@i2c:2", "loop@spi:1", "flash@spi:2", "cyclic@can:1", "responder@can:1"}) {
        initial_.push_back(peerOf(text));
    }
}

void Peers::add(std::string_view text) {
    const Peer peer = peerOf(text);
    std::erase_if(initial_, [&](const Peer& each) { return isAt(each, peer.bus, peer.port); });
    chosen_.push_back(peer);
}

std::vector<Peer> Peers::at(Bus bus, int port) const {
    std::vector<Peer> found;
    for (const auto& list : {initial_, chosen_}) {
        std::ranges::copy_if(list, std::back_inserter(found), [&](const Peer& each) { return isAt(each, bus, port); });
    }
    return found;
}

}  // namespace zvr::sim
