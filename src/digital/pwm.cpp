// Pulse-width modulation: the device makes the waveform, the host forwards frequency and duty cycle.
#include "core/wire/failures.h"
#include "digital/digital.h"

namespace zvr::python {

void definePwm(Package& package) {
    const Parameter channel{"channel", "int", "channel, 0 or 1"};
    const Parameter frequency{"frequency", "float",
                              "frequency in the device's unit, 32-bit float; the device judges it"};
    const Parameter dutyCycle{"duty_cycle", "float",
                              "duty cycle in the device's unit, 32-bit float; the device judges it"};
    const std::vector<Check> checks{calls("_checkPWMChannel", {"channel"})};

    Feature pwm(package, "PWM", "Outputs of pulse-width modulation.");
    // The failure is the counter's, and the counter's is the one of this module: programs that catch them know it so.
    pwm.shared("_checkPWMChannel", {channel}, "Refuses a channel that no model has.", {},
               {"CounterChannelNotAvaliableError: `channel` is neither 0 nor 1"},
               [](py::handle, const Object& channel) {
                   if (!isOneOf(channel, {0, 1})) throw Failure(FailureId::CounterChannelNotAvaliableError);
               });
    // clang-format off
    pwm.rows({
        {"PWM_open",  {channel}, checks, OPEN_PWM,  {u8("channel")}, status(1), "Claims a channel."},
        {"PWM_start", {channel}, checks, START_PWM, {u8("channel")}, status(1), "Starts the waveform."},
        {"PWM_stop",  {channel}, checks, STOP_PWM,  {u8("channel")}, status(1), "Stops the waveform."},
        {"PWM_close", {channel}, checks, CLOSE_PWM, {u8("channel")}, status(1), "Releases a channel."},
        {"PWM_setFrequency", {channel, frequency}, checks, SET_PWM_FREQUENCY, {u8("channel"), f32("frequency")},
            status(1), "Sets the frequency."},
        {"PWM_setDutyCycle", {channel, dutyCycle}, checks, SET_PWM_DUTY_CYCLE, {u8("channel"), f32("duty_cycle")},
            status(1), "Sets the duty cycle."},
    });
    // clang-format on
}

}  // namespace zvr::python
