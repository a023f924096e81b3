// The simulated drone, in time that the test passes.
#include "physics/flight.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zvr::sim {
namespace {

using enum Flight::Axis;
using Answer = Flight::Answer;
using Task = Flight::Task;

constexpr double pi = 3.14159265358979323846;

Flight hovering() {
    Flight flight;
    EXPECT_EQ(flight.activate(true), Answer::done);
    EXPECT_EQ(flight.takeOff(true), Answer::done);
    flight.advance(10);
    EXPECT_EQ(flight.task(), Task::hover);
    return flight;
}

// Flies until nothing moves, by small steps, each of which is looked at; gives the seconds.
template <class Look>
double settle(Flight& flight, Look look) {
    double seconds = 0;
    for (constexpr double step = 0.005; flight.task() != Task::hover && seconds < 60; seconds += step) {
        flight.advance(step);
        look();
    }
    EXPECT_EQ(flight.task(), Task::hover);
    return seconds;
}

TEST(Flight, WhatIsNotTheTimeForIsRefused) {
    Flight flight;
    EXPECT_EQ(flight.takeOff(true), Answer::notNow);  // not active
    for (const Answer answer : {flight.land(true), flight.land(false), flight.stop(), flight.takeOff(false),
                                flight.moveTo(z, -2, 1), flight.moveTo(1, 1, 1)}) {
        EXPECT_EQ(answer, Answer::notNow);
    }
    flight.activate(true);
    EXPECT_EQ(flight.takeOff(true), Answer::done);
    flight.advance(0.5);
    EXPECT_EQ(flight.takeOffProgress(), Flight::Progress::underWay);
    for (const Answer answer : {flight.takeOff(true), flight.activate(false), flight.moveTo(x, 1, 1), flight.stop()}) {
        EXPECT_EQ(answer, Answer::notNow);
    }
    flight.advance(10);
    EXPECT_EQ(flight.moveTo(roll, 0.1, 1), Answer::notNow);  // it holds its position
    EXPECT_EQ(flight.moveTo(z, 0.1, 1), Answer::impossible);
    EXPECT_EQ(flight.moveTo(z, -8.1, 1), Answer::impossible);
    EXPECT_EQ(flight.moveTo(x, std::nan(""), 1), Answer::impossible);
    EXPECT_EQ(flight.moveTo(1, 1, 0), Answer::impossible);
    EXPECT_EQ(flight.targets(), (Flight::Six{0, 0, 0, 0, 0, -1.5}));
    flight.holdPosition(false);
    EXPECT_EQ(flight.moveTo(x, 1, 1), Answer::notNow);
    EXPECT_EQ(flight.moveTo(pitch, 1, 1), Answer::impossible);
}

TEST(Flight, AStraightWayWithinItsSpeedAndAcceleration) {
    Flight flight = hovering();
    ASSERT_EQ(flight.moveTo(6, -8, 2), Answer::done);
    Flight::Six before = flight.positions();
    double fastest = 0;
    const double seconds = settle(flight, [&] {
        const Flight::Six now = flight.positions(), velocity = flight.velocities(), pull = flight.accelerations();
        EXPECT_NEAR(now[x] * 8, now[y] * -6, 1e-6);
        EXPECT_LE(std::hypot(velocity[x], velocity[y]), 2 + 1e-9);
        EXPECT_LE(std::hypot(pull[x], pull[y]), 2 * 2 + 1e-6);
        EXPECT_NEAR((now[x] - before[x]) / 0.005, velocity[x], 0.05);
        EXPECT_NEAR(now[z], -1.5, 1e-12);
        fastest = std::max(fastest, std::hypot(velocity[x], velocity[y]));
        before = now;
    });
    EXPECT_NEAR(fastest, 2, 0.01);
    EXPECT_NEAR(seconds, 10.0 / 2 + 2.0 / 2, 0.5);  // at full speed, and once the time to reach it
    EXPECT_EQ(flight.positions(), (Flight::Six{0, 0, 0, 6, -8, -1.5}));
}

TEST(Flight, TheSameFlightInOneStepAndInMany) {
    Flight once = hovering(), often = hovering();
    for (Flight* flight : {&once, &often}) flight->moveTo(5, 5, 3);
    once.advance(2);
    for (int i = 0; i < 2000; ++i) often.advance(0.001);
    for (const Flight::Axis axis : {x, y, z}) EXPECT_NEAR(once.positions()[axis], often.positions()[axis], 0.02);
    EXPECT_GT(once.positions()[x], 1);
}

TEST(Flight, ItBrakesFromAnySpeedAndTurnsBack) {
    Flight flight = hovering();
    flight.moveTo(x, 20, 4);
    flight.advance(3);
    const double passing = flight.positions()[x];
    ASSERT_NEAR(flight.velocities()[x], 4, 1e-6);
    ASSERT_EQ(flight.stop(), Answer::done);
    settle(flight, [] {});
    EXPECT_NEAR(flight.positions()[x], passing + 4 * 4 / (2 * 2.0), 0.1);
    flight.moveTo(x, 20, 4);
    flight.advance(2);
    ASSERT_EQ(flight.moveTo(0, 3, 4), Answer::done);  // behind it, while it is fast
    settle(flight, [] {});
    EXPECT_EQ(flight.positions(), (Flight::Six{0, 0, 0, 0, 3, -1.5}));
    flight.moveTo(x, 20, 4);
    flight.advance(2);
    const double here = flight.positions()[x];
    ASSERT_EQ(flight.moveTo(here, 9, 4), Answer::done);  // across its way
    settle(flight, [] {});
    EXPECT_EQ(flight.positions(), (Flight::Six{0, 0, 0, here, 9, -1.5}));
}

TEST(Flight, TurnsGoTheShortWayAndTheBodyGoesWhereItLooks) {
    Flight flight = hovering();
    flight.moveTo(yaw, 3, 2);
    settle(flight, [] {});
    flight.moveTo(yaw, -3, 2);
    settle(flight, [&] { EXPECT_GE(std::abs(flight.positions()[yaw]), 3 - 1e-9); });
    EXPECT_NEAR(flight.positions()[yaw], -3, 1e-9);
    flight.moveTo(yaw, pi / 2, 2);
    settle(flight, [] {});
    const auto [north, east] = flight.fromBody(2, 1);
    EXPECT_NEAR(north, -1, 1e-9);
    EXPECT_NEAR(east, 2, 1e-9);
}

TEST(Flight, LeaningAndAcceleratingGoTogether) {
    Flight flight = hovering();
    flight.moveTo(x, 10, 3);
    flight.advance(0.7);
    EXPECT_NEAR(flight.positions()[pitch], -std::atan(2 / 9.81), 1e-3);  // the nose goes down to go forward
    settle(flight, [] {});
    flight.holdPosition(false);
    ASSERT_EQ(flight.moveTo(roll, 0.2, 1), Answer::done);
    flight.advance(60);
    EXPECT_NEAR(flight.velocities()[y], 9.81 * std::tan(0.2) / 0.3, 1e-3);  // against its drag
    EXPECT_EQ(flight.task(), Task::hover);
    flight.holdPosition(true);
    settle(flight, [] {});
    EXPECT_EQ(flight.velocities(), Flight::Six{});
}

TEST(Flight, TakeOffsAndLandingsCanBeEnded) {
    Flight flight;
    flight.activate(true);
    flight.takeOff(true);
    flight.advance(0.6);
    ASSERT_EQ(flight.takeOff(false), Answer::done);
    settle(flight, [] {});
    const double height = flight.positions()[z];
    EXPECT_LT(height, -0.2);
    EXPECT_GT(height, -1.4);
    EXPECT_EQ(flight.takeOffProgress(), Flight::Progress::none);
    flight.moveTo(z, -3, 1);
    flight.advance(10);
    ASSERT_EQ(flight.land(true), Answer::done);
    flight.advance(1);
    EXPECT_EQ(flight.task(), Task::landing);
    EXPECT_EQ(flight.stop(), Answer::notNow);
    ASSERT_EQ(flight.land(false), Answer::done);
    settle(flight, [] {});
    EXPECT_LT(flight.positions()[z], -2);
    flight.land(true);
    flight.advance(10);
    EXPECT_EQ(flight.task(), Task::ground);
    EXPECT_EQ(flight.landingProgress(), Flight::Progress::done);
    EXPECT_EQ(flight.velocities(), Flight::Six{});
    EXPECT_EQ(flight.takeOff(true), Answer::done);
}

TEST(Flight, AnEmptyBatteryEndsIt) {
    Flight flight = hovering();
    EXPECT_GT(flight.battery().percent, 99);
    flight.advance(1200);
    EXPECT_EQ(flight.task(), Task::ground);
    EXPECT_LT(flight.battery().percent, 6);
    EXPECT_LT(flight.battery().volts, 14.5);
    EXPECT_EQ(flight.takeOff(true), Answer::notNow);
    flight.advance(1e9);
    EXPECT_EQ(flight.battery().percent, 0);
}

}  // namespace
}  // namespace zvr::sim
