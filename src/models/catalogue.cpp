// Tables for a program that browses the examples: a list of them, and notes to read before running one.
#include "models/models.h"

namespace zvr::python {

namespace {

struct Example {
    const char* category;
    const char* title;
    const char* file;
};

constexpr Example examples[] = {
    {"Getting started", "Analog inputs, read, streamed and logged", "examples/demo.py"},
    {"Getting started", "Digital lines, read, written and logged", "examples/digital.py"},
    {"Waveforms", "Analog outputs: levels, forms and samples of one's own", "examples/waveforms.py"},
    {"Finding devices", "What is on the network and on USB", "examples/discover.py"},
    {"Settings", "Addresses, clock and time server", "examples/settings.py"},
    {"Pulses", "PWM, counters and the encoder over USB", "examples/pulses.py"},
    {"Serial buses", "Chips on I2C and SPI, devices on UART lines", "examples/buses.py"},
    {"Serial buses", "A node of a CAN bus", "examples/can_bus.py"},
    {"Chassis", "Slots and their lines", "examples/chassis.py"},
    {"Motion", "Four axes along a line, a circle and a helix", "examples/motion.py"},
    {"Drone", "A square, flown and told", "examples/drone.py"},
    {"Wi-Fi boxes", "Lights, battery, radio and memory card", "examples/wifi.py"},
    {"Sensing", "Seven thermocouples", "examples/thermocouples.py"},
    {"Sensing", "Attitude of a box that sways", "examples/attitude.py"},
    {"Sensing", "Relays and their counters", "examples/relays.py"},
    {"Sensing", "A sweep of a variable resistor", "examples/resistors.py"},
    {"Sensing", "Records of the multimeter", "examples/multimeter.py"},
};

constexpr std::pair<const char*, const char*> scenarios[] = {
    {"Sable", "A bench box on USB: logic lines, pulses and serial buses beside the computer."},
    {"Heron", "A battery-powered box: measurements where no cable goes."},
    {"Tarn", "A box in the machine: 24 V lines and measurements over Ethernet."},
    {"Lattice", "A chassis whose slots take the modules that the test stand needs."},
    {"Ratchet", "Four axes that move together along lines, arcs and helices."},
    {"Pawl", "One stepper motor with its drive."},
    {"Drone", "A flight controller on a serial line."},
};

}  // namespace

void defineCatalogue(Package& package) {
    py::list categories;
    py::dict titles, files, uses;
    for (const auto& [category, title, file] : examples) {
        if (!categories.contains(category)) categories.append(category);
        titles.attr("setdefault")(category, py::list()).attr("append")(title);
        files[title] = file;
    }
    for (const auto& [family, use] : scenarios) uses[family] = use;
    package.constant("CATEGORY_CONSOLE_LIST", categories);
    package.constant("CATEGORY_CONSOLE_DICT", titles);
    package.constant("EXAMPLE_CONSOLE_DICT", files);
    package.constant("EXAMPLE_GUI_DICT", py::dict());
    package.constant("SCENARIO", uses);
    package.constant("SEE_MORE",
                     py::str("docs/README.md leads to a page for each family; help(pyzvr) lists everything."));
    package.constant("SPYDER",
                     py::str("In a console that runs an event loop of its own, use the blocking forms, or await "
                             "the others directly instead of through asyncio.run."));
    package.constant("NOTICE",
                     py::str("Check the wiring before an output is opened: a line drives what is connected."));
    package.constant("NOTICE_DRONE",
                     py::str("Take the propellers off for a first try, and keep the landing command ready."));
}

}  // namespace zvr::python
