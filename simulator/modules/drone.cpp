// The flight controller: identity, and commands and queries of a flight.
#include <memory>

#include "device/modules.h"
#include "modules/ports.h"
#include "physics/flight.h"

namespace zvr::sim {

namespace {

using Answer = Flight::Answer;

Bytes floatsOf(const auto& numbers) {
    Bytes data;
    for (const double number : numbers) append(data, static_cast<float>(number));
    return data;
}

struct Pilot {
    Flight flight;
    double seconds = 0;  // that it has flown for
};

// The commands on the flight at the current time. Every request selects port 0.
class Controller : public PortCommands<Flight> {
public:
    explicit Controller(Device& device)
        : PortCommands(device, Status::pinIndex,
                       [&device, pilot = std::make_shared<Pilot>()](std::uint8_t port, Request&) -> Flight* {
                           if (port != 0) return nullptr;
                           const double now = device.seconds();
                           pilot->flight.advance(now - pilot->seconds);
                           pilot->seconds = now;
                           return &pilot->flight;
                       }) {}

    template <class Wish>
    void onWish(Command command, Wish wish) const {
        onChange(command, [wish](Flight& flight, Request r) { return statusOf(wish(flight, r)); });
    }
    /// A command with a byte of 0 or 1.
    void onSwitch(Command command, Answer (Flight::*change)(bool)) const {
        onWish(command, [change](Flight& flight, Request r) {
            const std::uint8_t value = r.u8();
            return value > 1 ? Answer::impossible : (flight.*change)(value == 1);
        });
    }
    /// A move of one axis, relative to where it is or not.
    void onMove(Command command, Flight::Axis axis, bool relative) const {
        onWish(command, [axis, relative](Flight& flight, Request r) {
            const double from = relative ? flight.positions()[axis] : 0, way = r.f32();
            return flight.moveTo(axis, way + from, r.f32());
        });
    }
    /// A move of x and y from where it is. `way` makes north and east of the floats before the speed.
    template <class Way>
    void onMoveAcross(Command command, Way way) const {
        onWish(command, [way](Flight& flight, Request r) {
            const std::array<double, 2> across = way(flight, r);
            const Flight::Six from = flight.positions();
            return flight.moveTo(from[Flight::x] + across[0], from[Flight::y] + across[1], r.f32());
        });
    }

private:
    static Status statusOf(Answer answer) {
        return answer == Answer::done ? Status::ok : answer == Answer::notNow ? Status::notEnabled : Status::motion;
    }
};

void addIdentity(Device& device) {
    device.onPort(DRONE_GET_SERIAL_NUMBER,
                  [&device](std::uint8_t port, Request) { return reply(port, device.identity.serial); });
    device.onPort(DRONE_GET_FIRMWARE_VERSION, [](std::uint8_t port, Request) { return reply(port, firmwareVersion); });
}

void addStatus(const Controller& controller) {
    controller.onRead(DRONE_READ_STATUS,
                      [](Flight& f) { return static_cast<std::uint8_t>(f.isActive() + f.isFlying()); });
    controller.onRead(DRONE_READ_FLIGHT_MODE, &Flight::holdsPosition);
    controller.onRead(DRONE_READ_TASK_CONTROL_MODE, &Flight::task);
    controller.onRead(DRONE_GET_ACTIVE_STATUS, &Flight::isActive);
    controller.onRead(DRONE_GET_TAKEOFF_STATUS, &Flight::takeOffProgress);
    controller.onRead(DRONE_GET_LANDING_STATUS, &Flight::landingProgress);
    controller.onRead(DRONE_READ_INPOSITION, [](Flight& f) {
        using enum Flight::Axis;
        return reply(f.hasReached(roll), f.hasReached(pitch), f.hasReached(yaw), f.hasReached(x), f.hasReached(y),
                     f.hasReached(z));
    });
    controller.onRead(DRONE_READ_TRAJECTORY, [](Flight& f) { return floatsOf(f.targets()); });
    controller.onRead(DRONE_READ_TRAJECTORY_DONE, &Flight::isOnTarget);
    controller.onRead(DRONE_READ_NED_STATE_RPYXYZ, [](Flight& f) {
        return reply(floatsOf(f.positions()), floatsOf(f.velocities()), floatsOf(f.accelerations()));
    });
    controller.onRead(DRONE_READ_BATTERY, [](Flight& f) {
        const auto [volts, amperes, percent] = f.battery();
        return floatsOf(std::array{volts, amperes, percent});
    });
    controller.onSwitch(DRONE_SET_FLIGHT_MODE, &Flight::holdPosition);
    controller.onSwitch(DRONE_SET_ACTIVE_STATUS, &Flight::activate);
    controller.onSwitch(DRONE_SET_TAKEOFF_STATUS, &Flight::takeOff);
    controller.onSwitch(DRONE_SET_LANDING_STATUS, &Flight::land);
    controller.onWish(DRONE_STOP_MOVING, [](Flight& f, Request) { return f.stop(); });
    // Both sensors measure the true altitude.
    controller.onWish(DRONE_SET_BAROMETER_MODE,
                      [](Flight&, Request r) { return r.u8() <= 1 ? Answer::done : Answer::impossible; });
}

void addMoves(const Controller& controller) {
    using enum Flight::Axis;
    controller.onMove(DRONE_MOVE_ABSOLUTE_ROLL_VEHICLE, roll, false);
    controller.onMove(DRONE_MOVE_ABSOLUTE_PITCH_VEHICLE, pitch, false);
    for (const auto& [axis, relative, absolute] :
         {std::tuple{yaw, DRONE_MOVE_RELATIVE_YAW_NED, DRONE_MOVE_ABSOLUTE_YAW_NED},
          {x, DRONE_MOVE_RELATIVE_X_NED, DRONE_MOVE_ABSOLUTE_X_NED},
          {y, DRONE_MOVE_RELATIVE_Y_NED, DRONE_MOVE_ABSOLUTE_Y_NED},
          {z, DRONE_MOVE_RELATIVE_Z_NED, DRONE_MOVE_ABSOLUTE_Z_NED}}) {
        controller.onMove(relative, axis, true);
        controller.onMove(absolute, axis, false);
    }
    controller.onWish(DRONE_MOVE_ABSOLUTE_XY_NED, [](Flight& f, Request r) {
        const double toX = r.f32(), toY = r.f32();
        return f.moveTo(toX, toY, r.f32());
    });
    controller.onMoveAcross(DRONE_MOVE_RELATIVE_XY_NED, [](Flight&, Request& r) {
        const double north = r.f32(), east = r.f32();
        return std::array{north, east};
    });
    controller.onMoveAcross(DRONE_MOVE_RELATIVE_X_VEHICLE,
                            [](Flight& f, Request& r) { return f.fromBody(r.f32(), 0); });
    controller.onMoveAcross(DRONE_MOVE_RELATIVE_Y_VEHICLE,
                            [](Flight& f, Request& r) { return f.fromBody(0, r.f32()); });
    controller.onMoveAcross(DRONE_MOVE_RELATIVE_XY_VEHICLE, [](Flight& f, Request& r) {
        const double forward = r.f32(), right = r.f32();
        return f.fromBody(forward, right);
    });
}

}  // namespace

void addDrone(Device& device) {
    addIdentity(device);
    const Controller controller(device);
    addStatus(controller);
    addMoves(controller);
}

}  // namespace zvr::sim
