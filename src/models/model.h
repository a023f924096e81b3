// A model as one row of a table. The product classes are made from the rows, and operations look up in them what
// differs between models. The members' defaults apply to classes without a row.
#pragma once

#include <optional>
#include <vector>

namespace zvr::python {

/// Pins of a digital port, from the first to the last.
struct Pins {
    int port;
    int first;
    int last;
};

/// A port of a function with its digital lines, or its channels if these are not digital lines. A port with lines on
/// several digital ports has an entry for each.
struct Port {
    int number;
    std::optional<int> linesOn = {};  ///< the digital port
    int first = 0;
    int last = 0;
};
using Ports = std::vector<Port>;

/// Properties that depend on a model's link.
struct ModelFamily {
    enum class Logger { none, first, last };  ///< when it is made: before or after the modules

    const char* link = "";
    const char* device = nullptr;           ///< the device class
    const char* connectArgument = nullptr;  ///< a usual one
    bool hasAsync = true;                   ///< whether modules have the awaitable form too
    bool asyncFirst = false;                ///< whether the constructors of the awaitable forms run first
    Logger logger = Logger::last;
    int firstYear = 1900;  ///< the clock's epoch
    const char* nameMark =
        nullptr;                ///< part of the display name of every device that counts its years like this family
    bool connectsOnce = false;  ///< whether the model's `connect` and `disconnect` check the state first
};
inline constexpr ModelFamily noFamily{};

enum class Listing {
    model,      ///< a class of its own, in all lists
    announced,  ///< without a class
    tool        ///< not a device: has a display name only
};

struct DigitalLines {
    std::vector<Pins> inputs = {};  ///< a port may have several entries
    std::vector<Pins> outputs = {};
    int pinsPerPort = 8;         ///< positions in a port, with or without a line
    bool fixedFunction = false;  ///< lines are always in use and need not be opened
};

/// What a client can choose of an analog input.
enum class Enables { channels, chipSelects, nothing };

struct AnalogInput {
    Ports ports = {{0}};
    int bits = 16;                    ///< of a sample
    double ratio = 0.00030517578125;  ///< volts per count: 10 / 32768
    int channels = 8;                 ///< of a port, or of each of its chip selects
    int chipSelects = 3;              ///< of a port, if they can be chosen
    Enables enables = Enables::channels;
    std::vector<int> rates = {};   ///< the highest in Hz, by how many are enabled; none where it does not stream
    int triggerModes = 2;          ///< from 0 on
    bool variable = false;         ///< whether it has the commands for a variable number of channels
    bool opensByItself = false;    ///< whether opening sends nothing
    bool configuresPort0 = false;  ///< whether port 0 is configured, whatever port is named
    bool streamsPort0 = false;     ///< whether port 0 is prepared for streaming, whatever port is named
};

struct AnalogOutput {
    Ports ports = {{0}};
    int low = -10, high = 10;  ///< V
    int channels = 8;
    int rate = 15000;            ///< the highest in Hz
    bool opensByItself = false;  ///< whether opening sends nothing
    bool sharesLines = true;     ///< whether its lines must be idle before it is opened
};

struct TemperatureSensors {
    Ports ports = {};
    int sensors = 2;                     ///< of a port
    bool sharesLines = true;             ///< whether its lines must be idle or digital before it is opened
    std::optional<int> statusMode = {};  ///< sent with a request for a sensor's state
};

struct Model {
    const char* name = "";  ///< of the class
    const char* displayName = "";
    const ModelFamily* family = &noFamily;
    const char* what = "";
    Listing listing = Listing::model;
    /// Bases of a class that only derives. All other members are then those of the first base, if that is a model.
    std::vector<const char*> bases = {};
    std::vector<const char*> modules = {};  ///< in the order of their constructors
    bool countsSlots = false;               ///< whether callers count ports as slots, from 1
    DigitalLines digital = {};
    std::vector<int> uart = {}, i2c = {}, spi = {}, can = {};  ///< their ports
    AnalogInput analogInput = {};
    AnalogOutput analogOutput = {};
    TemperatureSensors temperature = {};
    Ports attitude = {{0}};
    Ports motion = {{0}};  ///< the connectors
};

/// All rows.
const std::vector<Model>& models();

}  // namespace zvr::python
