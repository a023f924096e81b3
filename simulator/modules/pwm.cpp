// The PWM outputs.
#include "device/modules.h"
#include "modules/channels.h"

namespace zvr::sim {

namespace {

constexpr double fastest = 10e6;  // Hz

class Output {
public:
    Output() = default;

    Stage stage() const { return stage_; }
    void enter(Stage stage) {
        if (stage_ == Stage::closed) *this = Output(wave_);
        stage_ = stage;
        drive();
    }

    bool setFrequency(double frequency) {
        if (!(frequency > 0 && frequency <= fastest)) return false;
        frequency_ = frequency;
        drive();
        return true;
    }

    bool setDuty(double percent) {
        if (!(percent >= 0 && percent <= 100)) return false;
        duty_ = percent;
        drive();
        return true;
    }

    const Oscillator& wave() const { return wave_; }

private:
    explicit Output(const Oscillator& wave) : wave_(wave) {}

    // A level that never changes has no edges.
    void drive() {
        const bool changes = stage_ == Stage::started && duty_ > 0 && duty_ < 100;
        wave_.setFrequency(changes ? frequency_ : 0);
    }

    Stage stage_ = Stage::closed;
    double frequency_ = 1000;
    double duty_ = 50;
    Oscillator wave_;
};

double floatOf(ByteView rest) { return readBigEndian<float>(rest); }

}  // namespace

void addPwm(Device& device) {
    const Channels<Output, 2> outputs(device, Status::pwm, {});
    outputs.onStages(OPEN_PWM, START_PWM, STOP_PWM, CLOSE_PWM);
    outputs.onChange(SET_PWM_FREQUENCY,
                     [](Output& output, ByteView rest) { return output.setFrequency(floatOf(rest)); });
    outputs.onChange(SET_PWM_DUTY_CYCLE, [](Output& output, ByteView rest) { return output.setDuty(floatOf(rest)); });
    device.pulses = [all = outputs.all()](std::size_t channel) { return all->at(channel).wave(); };
}

}  // namespace zvr::sim
