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

using Outputs = Channels<Output, 2>;

class Pulses : public PulseSource {
public:
    explicit Pulses(const Outputs& outputs) : all_(outputs.all()) {}
    Oscillator pulses(std::size_t channel) const override { return all_->at(channel).wave(); }

private:
    std::shared_ptr<Outputs::All> all_;
};

}  // namespace

void addPwm(Device& device) {
    const Outputs outputs(device, Status::pwm, Outputs::All{});
    outputs.onOpenAndClose(OPEN_PWM, STOP_PWM, CLOSE_PWM);
    outputs.onStart(START_PWM);
    outputs.onChange(SET_PWM_FREQUENCY, [](Output& output, Request r) { return output.setFrequency(r.last<float>()); });
    outputs.onChange(SET_PWM_DUTY_CYCLE, [](Output& output, Request r) { return output.setDuty(r.last<float>()); });
    device.pulseSource.provide(std::make_shared<Pulses>(outputs));
}

}  // namespace zvr::sim
