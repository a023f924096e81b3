// The stepper drive's commands: access to the chip's registers, and moves that the drive runs by itself.
#include "physics/tmc5240.h"

#include <memory>

#include "core/wire/motion_codes.h"
#include "device/modules.h"
#include "modules/ports.h"

namespace zvr::sim {

namespace {

constexpr std::uint8_t limitPort = 1, servoPort = 2;

double speedOf(Request& request) { return request.u32(); }
int directionOf(Request& request) { return request.u8() == 0 ? 1 : -1; }

// Speed, and one rate for both ways; or speed, acceleration and deceleration.
Ramp evenRampOf(Request& request) {
    const double speed = speedOf(request), rate = speedOf(request);
    return {0, speed, rate, rate};
}
Ramp rampOf(Request& request) {
    const double speed = speedOf(request), acceleration = speedOf(request);
    return {0, speed, acceleration, speedOf(request)};
}

bool findHome(TMC5240& drive, Request r, bool ofIndex) {
    const double speed = speedOf(r), approach = speedOf(r), rate = speedOf(r);
    const int direction = directionOf(r), finalDirection = directionOf(r);
    const double offset = r.i32();
    const bool resets = r.u8() != 0;
    const double index = drive.track().indexBehind(drive.place(), direction);
    const Zone zone = ofIndex ? Zone{index, index} : drive.track().home();
    return drive.seek({zone, direction, finalDirection, approach, offset, resets, false}, {0, speed, rate, rate});
}

bool findLimit(TMC5240& drive, Request r) {
    const int direction = directionOf(r);
    const double speed = speedOf(r), approach = speedOf(r), rate = speedOf(r), offset = r.i32();
    const bool resets = r.u8() != 0;
    const Zone zone = direction > 0 ? drive.track().forward() : drive.track().reverse();
    return drive.seek({zone, direction, direction, approach, offset, resets, true}, {0, speed, rate, rate});
}

bool moveBySteps(TMC5240& drive, Request r) {
    const std::uint32_t position = r.u32();
    const Ramp ramp = rampOf(r);
    const std::uint8_t mode = r.u8();
    if (mode > 1) return false;
    const std::uint32_t from = mode == 1 ? drive.read(PAWL_21_XACTUAL) : 0;
    return drive.moveTo(static_cast<std::int32_t>(from + position), ramp);
}

// The drive at the current time; its switches are inputs of a digital port.
class Driver : public InputLevels {
public:
    explicit Driver(const Track& track) : drive_(track) {}

    TMC5240& current() {
        drive_.advance(std::chrono::duration<double>(Clock::now() - start_).count());
        return drive_;
    }
    std::uint16_t levels(int port) override { return port == limitPort ? current().switches() : std::uint16_t{0}; }

private:
    using Clock = std::chrono::steady_clock;

    TMC5240 drive_;
    const Clock::time_point start_ = Clock::now();
};

using Shared = std::shared_ptr<Driver>;

void addRegisters(Device& device, const Shared& driver) {
    constexpr std::uint8_t addressBits = 0x7F;
    device.onPort(MOTION_READ_REG, [driver](std::uint8_t port, Request r) {
        const std::uint8_t address = r.u8() & addressBits;
        const std::uint32_t value = port == 0 ? driver->current().read(address) : 0;
        return reply(port, std::uint8_t{0}, driver->current().status(), value);
    });
    device.onPort(MOTION_WRITE_REG, [driver](std::uint8_t port, Request r) {
        const std::uint8_t address = r.u8() & addressBits;
        r.u8();
        const auto value = r.last<std::uint32_t>();
        if (port == 0) driver->current().write(address, value);
        const Status status = port == 0 ? Status::ok : Status::drive;
        return reply(port, std::uint8_t{0}, driver->current().status(), static_cast<std::uint32_t>(status));
    });
    device.onPort(MOTION_GET_PROC_STATE, [driver](std::uint8_t port, Request) {
        const TMC5240& drive = driver->current();
        return reply(port, drive.process(), drive.read(PAWL_21_XACTUAL));
    });
    device.onPort(MOTION_GET_PARAM, [driver](std::uint8_t port, Request) {
        const Status status = port == 0 ? Status::ok : Status::drive;
        const Bytes parameters = driver->current().parameters();
        return reply(port, status, static_cast<std::uint8_t>(parameters.size()), parameters);
    });
}

}  // namespace

void addTmc5240(Device& device) {
    const auto driver = std::make_shared<Driver>(device.tracks[0]);
    device.inputLevels.provide(driver);
    device.onReboot([driver] { driver->current().reset(); });
    addRegisters(device, driver);
    const PortCommands<TMC5240> drives(device, Status::drive, [driver](std::uint8_t port, Request&) {
        return port == 0 ? &driver->current() : nullptr;
    });
    drives.onChange(MOTION_STOP_PROC, &TMC5240::stop);
    drives.onChange(MOTION_RESET_FACTORY, &TMC5240::reset);
    // A move wants the servo on, which is a low level.
    const auto onMove = [&](Command command, auto move) {
        drives.onChange(command, [&device, move](TMC5240& drive, Request r) {
            return (device.digitalLines->levels(servoPort) & 1) == 0 && move(drive, r);
        });
    };
    onMove(MOTION_START_V_MOVE, [](TMC5240& drive, Request r) {
        const Ramp ramp = rampOf(r);
        return drive.run(directionOf(r), ramp);
    });
    onMove(MOTION_START_P_MOVE, moveBySteps);
    onMove(MOTION_START_SCAN_MOVE, [](TMC5240& drive, Request r) {
        const std::int32_t from = r.i32(), to = r.i32();
        return drive.scan(from, to, evenRampOf(r));
    });
    onMove(MOTION_START_FIND_END, findLimit);
    onMove(MOTION_START_FIND_HOME, [](TMC5240& drive, Request r) { return findHome(drive, r, false); });
    onMove(MOTION_START_FIND_Z, [](TMC5240& drive, Request r) { return findHome(drive, r, true); });
}

}  // namespace zvr::sim
