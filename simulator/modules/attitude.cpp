// The inertial unit: sensors on a board that sways, and a filter that estimates from them.
#include <cmath>

#include "device/modules.h"
#include "modules/channels.h"
#include "physics/imu_motion.h"

namespace zvr::sim {

namespace {

// The groups of an estimate, by their bits.
constexpr std::uint8_t orientationBit = 1, angularVelocityBit = 4, accelerationBit = 16;

class Unit {
public:
    explicit Unit(const Device& device) : device_(&device) {}

    Stage stage() const { return stage_; }
    void enter(Stage stage) {
        if (stage == Stage::closed) *this = Unit(*device_);
        if (stage == Stage::started) reset();
        stage_ = stage;
    }

    /// The filter starts from lying flat.
    void reset() { begin_ = device_->seconds(); }

    bool setGeneral(float gravity, float period) {
        if (!(gravity > 0 && std::isfinite(gravity) && period > 0 && std::isfinite(period))) return false;
        gravity_ = gravity;
        period_ = period;
        return true;
    }
    bool setDecay(float accelerometer, float magnetometer) {
        if (!(accelerometer > 0 && magnetometer > 0)) return false;
        decay_ = {accelerometer, accelerometer, magnetometer};
        return true;
    }

    ImuMotion sensors() const { return imuMotionAt(device_->seconds(), gravity_); }

    /// Estimates follow rotations immediately. The initial error of the orientation decays, corrected by gravity and
    /// the magnetic field.
    ImuMotion estimates() const {
        const double now = begin_ + std::floor((device_->seconds() - begin_) / period_) * period_;
        ImuMotion motion = imuMotionAt(now, gravity_);
        const Vector unknown = imuMotionAt(begin_, gravity_).angles;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            motion.angles[axis] -= unknown[axis] * std::exp((begin_ - now) / decay_[axis]);
        }
        return motion;
    }

private:
    const Device* device_;
    Stage stage_ = Stage::closed;
    double begin_ = 0;
    double gravity_ = 9.81, period_ = 0.01;
    Vector decay_ = {3, 3, 9};
};

using Units = Channels<Unit, 1>;

// Zeros while the filter is stopped or the sensors are unused.
Bytes vectorsOf(const std::vector<Vector>& vectors, bool shown) {
    Bytes data;
    for (const Vector& vector : vectors) {
        for (const double value : vector) append(data, static_cast<float>(shown ? value : 0));
    }
    return data;
}

Bytes estimatesOf(const Unit& unit, std::uint8_t mask) {
    const ImuMotion motion = unit.estimates();
    std::vector<Vector> vectors;
    if ((mask & orientationBit) != 0) vectors.push_back(motion.angles);
    if ((mask & angularVelocityBit) != 0) vectors.push_back(motion.angularVelocity);
    if ((mask & accelerationBit) != 0) vectors.push_back(motion.acceleration);
    return vectorsOf(vectors, unit.stage() == Stage::started);
}

}  // namespace

void addAttitude(Device& device) {
    const Units units(device, Status::notEnabled, {Unit(device)});
    units.onOpenAndClose(AHRS_OPEN, AHRS_STOP, AHRS_CLOSE);
    const auto unit = [all = units.all()]() -> Unit& { return all->front(); };
    device.onSilent(AHRS_START, [unit](Request r) {
        if (r.u8() == 0 && unit().stage() != Stage::closed) unit().enter(Stage::started);
    });
    units.onChange(AHRS_RESET, &Unit::reset);
    const auto addPair = [&](Command command, bool (Unit::*set)(float, float)) {
        units.onChange(command, [set](Unit& unit, Request r) {
            const float first = r.f32(), second = r.f32();
            return (unit.*set)(first, second);
        });
    };
    addPair(AHRS_SET_GNRL, &Unit::setGeneral);
    addPair(AHRS_VQF_SET_TAU, &Unit::setDecay);
    device.onPort(AHRS_GET_ESTIMATES, [unit](std::uint8_t port, Request r) {
        const std::uint8_t mask = r.u8();
        return reply(port, mask, estimatesOf(unit(), mask));
    });
    device.onPort(AHRS_GET_RAW_DATA, [unit](std::uint8_t port, Request) {
        const ImuMotion motion = unit().sensors();
        return reply(port, vectorsOf({motion.acceleration, motion.angularVelocity, motion.magneticField},
                                     unit().stage() != Stage::closed));
    });
}

}  // namespace zvr::sim
