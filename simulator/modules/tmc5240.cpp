// The stepper drive's commands: access to the chip's registers, and moves that the drive runs by itself.
#include "physics/tmc5240.h"

#include <memory>

#include "core/wire/motion_codes.h"
#include "device/modules.h"

namespace zvr::sim {

namespace {

constexpr std::uint8_t limitPort = 1, servoPort = 2;

/// The numbers of a payload, one after the other.
class Fields {
public:
    explicit Fields(ByteView data) : rest_(data) {}
    template <class Number>
    Number next() {
        const auto number = readBigEndian<Number>(slice(rest_, 0, sizeof(Number)));
        rest_ = rest_.subspan(sizeof(Number));
        return number;
    }
    double speed() { return next<std::uint32_t>(); }
    int direction() { return next<std::uint8_t>() == 0 ? 1 : -1; }

private:
    ByteView rest_;
};

Bytes behind(const std::array<std::uint8_t, 3>& header, Bytes rest) {
    rest.insert(rest.begin(), header.begin(), header.end());
    return rest;
}

bool findHome(TMC5240& stepper, Fields fields, bool ofIndex) {
    const double speed = fields.speed(), approach = fields.speed(), rate = fields.speed();
    const int direction = fields.direction(), finalDirection = fields.direction();
    const auto offset = fields.next<std::int32_t>();
    const bool resets = fields.next<std::uint8_t>() != 0;
    const double index = stepper.track().indexBehind(stepper.place(), direction);
    const Zone zone = ofIndex ? Zone{index, index} : stepper.track().home();
    return stepper.seek({zone, direction, finalDirection, approach, static_cast<double>(offset), resets, false},
                        {0, speed, rate, rate});
}

bool findLimit(TMC5240& stepper, Fields fields) {
    const int direction = fields.direction();
    const double speed = fields.speed(), approach = fields.speed(), rate = fields.speed();
    const auto offset = fields.next<std::int32_t>();
    const bool resets = fields.next<std::uint8_t>() != 0;
    const Zone zone = direction > 0 ? stepper.track().forward() : stepper.track().reverse();
    return stepper.seek({zone, direction, direction, approach, static_cast<double>(offset), resets, true},
                        {0, speed, rate, rate});
}

bool moveBySteps(TMC5240& stepper, Fields fields) {
    const auto position = fields.next<std::uint32_t>();
    const double speed = fields.speed(), acceleration = fields.speed(), deceleration = fields.speed();
    const auto mode = fields.next<std::uint8_t>();
    if (mode > 1) return false;
    const std::uint32_t from = mode == 1 ? stepper.read(PAWL_21_XACTUAL) : 0;
    return stepper.moveTo(static_cast<std::int32_t>(from + position), {0, speed, acceleration, deceleration});
}

}  // namespace

void addTmc5240(Device& device) {
    const auto stepper = std::make_shared<TMC5240>(device.tracks[0]);
    const auto current = [stepper, start = std::chrono::steady_clock::now()]() -> TMC5240& {
        stepper->advance(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        return *stepper;
    };
    device.onReboot([current] { current().reset(); });
    device.inputLevels = [current](int port) { return port == limitPort ? current().switches() : std::uint16_t{0}; };

    device.onPort(MOTION_READ_REG, [current](std::uint8_t port, ByteView rest) {
        const std::uint8_t address = slice(rest, 0, 1)[0] & 0x7F;
        Bytes value;
        appendBigEndian(value, port == 0 ? current().read(address) : std::uint32_t{0});
        return behind({port, 0, current().status()}, value);
    });
    device.onPort(MOTION_WRITE_REG, [current](std::uint8_t port, ByteView rest) {
        const std::uint8_t address = slice(rest, 0, 1)[0] & 0x7F;
        const auto value = readBigEndian<std::uint32_t>(rest.subspan(2));
        if (port == 0) current().write(address, value);
        const Status status = port == 0 ? Status::ok : Status::drive;
        return Bytes{port, 0, current().status(), 0, 0, 0, static_cast<std::uint8_t>(status)};
    });
    const auto onAction = [&](Command command, std::function<bool(TMC5240&, Fields)> action) {
        device.onPort(command, [current, action = std::move(action)](std::uint8_t port, ByteView rest) {
            return reply(port, port == 0 && action(current(), Fields(rest)) ? Status::ok : Status::drive);
        });
    };
    onAction(MOTION_STOP_PROC, [](TMC5240& drive, Fields) {
        drive.stop();
        return true;
    });
    onAction(MOTION_RESET_FACTORY, [](TMC5240& drive, Fields) {
        drive.reset();
        return true;
    });
    // A move wants the servo on, which is a low level.
    const auto onMove = [&](Command command, std::function<bool(TMC5240&, Fields)> move) {
        onAction(command, [&device, move = std::move(move)](TMC5240& drive, Fields fields) {
            const auto levels = device.handle({READ_AND_GET_DI, {servoPort, 0, 1}});
            return levels && levels->back() == 0 && move(drive, fields);
        });
    };
    onMove(MOTION_START_V_MOVE, [](TMC5240& drive, Fields fields) {
        const double speed = fields.speed(), acceleration = fields.speed(), deceleration = fields.speed();
        return drive.run(fields.direction(), {0, speed, acceleration, deceleration});
    });
    onMove(MOTION_START_P_MOVE, moveBySteps);
    onMove(MOTION_START_SCAN_MOVE, [](TMC5240& drive, Fields fields) {
        const auto from = fields.next<std::int32_t>(), to = fields.next<std::int32_t>();
        const double speed = fields.speed(), rate = fields.speed();
        return drive.scan(from, to, {0, speed, rate, rate});
    });
    onMove(MOTION_START_FIND_END, findLimit);
    onMove(MOTION_START_FIND_HOME, [](TMC5240& drive, Fields fields) { return findHome(drive, fields, false); });
    onMove(MOTION_START_FIND_Z, [](TMC5240& drive, Fields fields) { return findHome(drive, fields, true); });
    device.onPort(MOTION_GET_PROC_STATE, [current](std::uint8_t port, ByteView) {
        const TMC5240& drive = current();
        Bytes data{port, static_cast<std::uint8_t>(drive.process())};
        appendBigEndian(data, drive.read(PAWL_21_XACTUAL));
        return data;
    });
    device.onPort(MOTION_GET_PARAM, [current](std::uint8_t port, ByteView) {
        const Status status = port == 0 ? Status::ok : Status::drive;
        const Bytes parameters = current().parameters();
        return behind({port, static_cast<std::uint8_t>(status), static_cast<std::uint8_t>(parameters.size())},
                      parameters);
    });
}

}  // namespace zvr::sim
