// Pulse-width modulation: the device makes the waveform, the host sets frequency and duty cycle.
#include "core/wire/failures.h"
#include "digital/digital.h"

namespace zvr::python {

void definePwm(Package& package) {
    const Parameter channel{"channel", "int", "channel, 0 or 1"};
    const Parameter frequency{"frequency", "float",
                              "frequency in the device's unit, 32-bit float; checked by the device"};
    const Parameter dutyCycle{"duty_cycle", "float",
                              "duty cycle in the device's unit, 32-bit float; checked by the device"};
    Feature pwm(package, "PWM", "Outputs of pulse-width modulation.");
    // Compat 2: this module raises the counter's error, and the counter raises this module's.
    const Definition checkChannel{
        .name = "_checkPWMChannel",
        .parameters = {channel},
        .doc = "Raises CounterChannelNotAvaliableError unless the channel is 0 or 1 (compatibility note 2).",
        .raises = {"CounterChannelNotAvaliableError: `channel` is neither 0 nor 1"},
        .body = [](py::handle, const Object& channel) {
            if (!isOneOf(channel, {0, 1})) throw Failure(FailureId::CounterChannelNotAvaliableError);
        }};
    pwm.shared(checkChannel);
    pwm.sharing({.checks = {checkChannel(channel)}, .fields = {channel | u8}})
        .operations({
            {.name = "PWM_open", .sends = OPEN_PWM, .doc = "Claims a channel."},
            {.name = "PWM_start", .sends = START_PWM, .doc = "Starts the waveform."},
            {.name = "PWM_stop", .sends = STOP_PWM, .doc = "Stops the waveform."},
            {.name = "PWM_close", .sends = CLOSE_PWM, .doc = "Releases a channel."},
            {.name = "PWM_setFrequency",
             .sends = SET_PWM_FREQUENCY,
             .fields = {frequency | f32},
             .doc = "Sets the frequency."},
            {.name = "PWM_setDutyCycle",
             .sends = SET_PWM_DUTY_CYCLE,
             .fields = {dutyCycle | f32},
             .doc = "Sets the duty cycle."},
        });
}

}  // namespace zvr::python
