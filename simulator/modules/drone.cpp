// The flight controller: who it is, and what a flight is told and asked.
#include <memory>

#include "device/modules.h"
#include "physics/flight.h"

namespace zvr::sim {

namespace {

using Answer = Flight::Answer;

template <class... Bytes_>
Bytes bytesOf(Bytes_... values) {
    return {static_cast<std::uint8_t>(values)...};
}

template <class Numbers>
void appendFloats(Bytes& data, const Numbers& numbers) {
    for (const double number : numbers) appendBigEndian(data, static_cast<float>(number));
}

Bytes floatsOf(std::initializer_list<Flight::Six> groups) {
    Bytes data;
    for (const Flight::Six& group : groups) appendFloats(data, group);
    return data;
}

Status statusOf(Answer answer) {
    return answer == Answer::done ? Status::ok : answer == Answer::notNow ? Status::notEnabled : Status::motion;
}

// The controller in its flight. Every request selects port 0.
class Controller {
public:
    explicit Controller(Device& device) : device_(device), flight_(std::make_shared<Pilot>()) {}

    /// A command that answers with values.
    template <class Read>
    void onRead(Command command, Read read) const {
        addHandler(command, [read](Flight& flight, ByteView) { return read(flight); });
    }
    /// A command that changes something and answers with a status.
    template <class Change>
    void onChange(Command command, Change change) const {
        addHandler(command,
                   [change](Flight& flight, ByteView rest) { return bytesOf(statusOf(change(flight, rest))); });
    }
    /// A command with a byte of 0 or 1.
    void onSwitch(Command command, Answer (Flight::*change)(bool)) const {
        onChange(command, [change](Flight& flight, ByteView rest) {
            const std::uint8_t value = slice(rest, 0, 1)[0];
            return value > 1 ? Answer::impossible : (flight.*change)(value == 1);
        });
    }
    /// A move of one axis, relative to where it is or not.
    void onMove(Command command, Flight::Axis axis, bool relative) const {
        onChange(command, [axis, relative](Flight& flight, ByteView rest) {
            return flight.moveTo(axis, floatAt(rest, 0) + (relative ? flight.positions()[axis] : 0), floatAt(rest, 1));
        });
    }
    /// A move of x and y from where it is. `way` makes north, east and speed of the floats.
    template <class Way>
    void onMoveAcross(Command command, Way way) const {
        onChange(command, [way](Flight& flight, ByteView rest) {
            const auto [across, speed] = way(flight, rest);
            const Flight::Six from = flight.positions();
            return flight.moveTo(from[Flight::x] + across[0], from[Flight::y] + across[1], speed);
        });
    }

    static double floatAt(ByteView rest, std::size_t index) {
        return readBigEndian<float>(slice(rest, index * sizeof(float), sizeof(float)));
    }

private:
    struct Pilot {
        Flight flight;
        double seconds = 0;  // that it has flown for
    };

    template <class Handle>
    void addHandler(Command command, Handle handle) const {
        device_.onPort(command, [&device = device_, pilot = flight_, handle](std::uint8_t port, ByteView rest) {
            if (port != 0) return reply(port, Status::pinIndex);
            const double now = device.seconds();
            pilot->flight.advance(now - pilot->seconds);
            pilot->seconds = now;
            return reply(port, handle(pilot->flight, rest));
        });
    }

    Device& device_;
    std::shared_ptr<Pilot> flight_;
};

void addIdentity(Device& device) {
    device.onPort(DRONE_GET_SERIAL_NUMBER,
                  [&device](std::uint8_t port, ByteView) { return reply(port, viewOf(device.identity.serial)); });
    device.onPort(DRONE_GET_FIRMWARE_VERSION, [](std::uint8_t port, ByteView) { return reply(port, viewOf("3.2.6")); });
}

void addStatus(const Controller& controller) {
    controller.onRead(DRONE_READ_STATUS, [](Flight& f) { return bytesOf(f.isActive() + f.isFlying()); });
    controller.onRead(DRONE_READ_FLIGHT_MODE, [](Flight& f) { return bytesOf(f.holdsPosition()); });
    controller.onRead(DRONE_READ_TASK_CONTROL_MODE, [](Flight& f) { return bytesOf(f.task()); });
    controller.onRead(DRONE_GET_ACTIVE_STATUS, [](Flight& f) { return bytesOf(f.isActive()); });
    controller.onRead(DRONE_GET_TAKEOFF_STATUS, [](Flight& f) { return bytesOf(f.takeOffProgress()); });
    controller.onRead(DRONE_GET_LANDING_STATUS, [](Flight& f) { return bytesOf(f.landingProgress()); });
    controller.onRead(DRONE_READ_INPOSITION, [](Flight& f) {
        using enum Flight::Axis;
        return bytesOf(f.hasReached(roll), f.hasReached(pitch), f.hasReached(yaw), f.hasReached(x), f.hasReached(y),
                       f.hasReached(z));
    });
    controller.onRead(DRONE_READ_TRAJECTORY, [](Flight& f) { return floatsOf({f.targets()}); });
    controller.onRead(DRONE_READ_TRAJECTORY_DONE, [](Flight& f) { return bytesOf(f.isOnTarget()); });
    controller.onRead(DRONE_READ_NED_STATE_RPYXYZ, [](Flight& f) {
        return floatsOf({f.positions(), f.velocities(), f.accelerations()});
    });
    controller.onRead(DRONE_READ_BATTERY, [](Flight& f) {
        const auto [volts, amperes, percent] = f.battery();
        Bytes data;
        appendFloats(data, std::array{volts, amperes, percent});
        return data;
    });
    controller.onSwitch(DRONE_SET_FLIGHT_MODE, &Flight::holdPosition);
    controller.onSwitch(DRONE_SET_ACTIVE_STATUS, &Flight::activate);
    controller.onSwitch(DRONE_SET_TAKEOFF_STATUS, &Flight::takeOff);
    controller.onSwitch(DRONE_SET_LANDING_STATUS, &Flight::land);
    controller.onChange(DRONE_STOP_MOVING, [](Flight& f, ByteView) { return f.stop(); });
    // Either sensor tells the altitude as it is.
    controller.onChange(DRONE_SET_BAROMETER_MODE, [](Flight&, ByteView rest) {
        return slice(rest, 0, 1)[0] <= 1 ? Answer::done : Answer::impossible;
    });
}

void addMoves(const Controller& controller) {
    using enum Flight::Axis;
    using Across = std::array<double, 2>;
    constexpr auto at = Controller::floatAt;
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
    controller.onChange(DRONE_MOVE_ABSOLUTE_XY_NED,
                        [](Flight& f, ByteView rest) { return f.moveTo(at(rest, 0), at(rest, 1), at(rest, 2)); });
    controller.onMoveAcross(DRONE_MOVE_RELATIVE_XY_NED, [](Flight&, ByteView rest) {
        return std::pair{Across{at(rest, 0), at(rest, 1)}, at(rest, 2)};
    });
    controller.onMoveAcross(DRONE_MOVE_RELATIVE_X_VEHICLE, [](Flight& f, ByteView rest) {
        return std::pair{f.fromBody(at(rest, 0), 0), at(rest, 1)};
    });
    controller.onMoveAcross(DRONE_MOVE_RELATIVE_Y_VEHICLE, [](Flight& f, ByteView rest) {
        return std::pair{f.fromBody(0, at(rest, 0)), at(rest, 1)};
    });
    controller.onMoveAcross(DRONE_MOVE_RELATIVE_XY_VEHICLE, [](Flight& f, ByteView rest) {
        return std::pair{f.fromBody(at(rest, 0), at(rest, 1)), at(rest, 2)};
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
