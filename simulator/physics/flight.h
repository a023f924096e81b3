// A flying drone. Time advances only through its interface.
//
// Numbers are metres, radians and seconds. x is north, y is east, z is down; the ground is at 0.
#pragma once

#include <array>
#include <cstdint>

namespace zvr::sim {

class Flight {
public:
    enum Axis : std::uint8_t { roll, pitch, yaw, x, y, z };
    using Six = std::array<double, 6>;  ///< by axis

    enum class Task : std::uint8_t { ground, takeOff, hover, move, landing };
    /// Of a take-off or a landing.
    enum class Progress : std::uint8_t { none, underWay, done };
    /// Outcome of a command.
    enum class Answer : std::uint8_t { done, notNow, impossible };

    struct Battery {
        double volts, amperes, percent;
    };

    void advance(double seconds);

    bool isActive() const { return active_; }
    bool isFlying() const { return task_ != Task::ground; }
    bool holdsPosition() const { return holdsPosition_; }
    Task task() const;
    Progress takeOffProgress() const { return takeOff_; }
    Progress landingProgress() const { return landing_; }
    Battery battery() const;

    Six positions() const;
    Six velocities() const { return each(&Follower::velocity); }
    Six accelerations() const { return each(&Follower::acceleration); }
    /// Where it is going.
    Six targets() const;
    bool hasReached(Axis axis) const;
    bool isOnTarget() const;

    Answer activate(bool active);
    /// Whether it holds its position, or the commanded roll and pitch.
    Answer holdPosition(bool holds);
    Answer takeOff(bool start);
    Answer land(bool start);
    Answer stop();
    /// One axis to a target. Roll and pitch can be commanded only while the position is not held, x and y only while it
    /// is.
    Answer moveTo(Axis axis, double target, double speed);
    /// Moves x and y along a straight line.
    Answer moveTo(double toX, double toY, double speed);
    /// Converts forward and right distances to north and east.
    std::array<double, 2> fromBody(double forward, double right) const;

private:
    /// A value that follows its target with limited speed and acceleration.
    struct Follower {
        double position = 0, velocity = 0, acceleration = 0;
        double target = 0, speed = 0, limit = 0;

        void follow(double to, double fastest, double strongest);
        void brake(double strongest);
        void rest() { velocity = acceleration = 0, target = position; }
        void step();
    };

    Six each(double Follower::*member) const;
    void step();
    void stepTilted();
    void lean();
    void startLanding();
    void brake();
    void drain(double seconds);

    std::array<Follower, 6> axes_;
    double waiting_ = 0;  // time that is not a whole step
    double charge_ = 1;
    bool active_ = false;
    bool holdsPosition_ = true;
    Task task_ = Task::ground;  // hover stands for moves too
    Progress takeOff_ = Progress::none, landing_ = Progress::none;
};

}  // namespace zvr::sim
