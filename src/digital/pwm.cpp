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
    Feature pwm(package, "PWM", "Outputs of pulse-width modulation.");
    // Compat 2: the error is the counter's, and the counter's is the one of this module.
    const Definition checkChannel{.name = "_checkPWMChannel",
                                  .parameters = {channel},
                                  .doc = "Refuses a channel that no model has.",
                                  .raises = {"CounterChannelNotAvaliableError: `channel` is neither 0 nor 1"},
                                  .body = [](py::handle, const Object& channel) {
                                      if (!isOneOf(channel, {0, 1}))
                                          throw Failure(FailureId::CounterChannelNotAvaliableError);
                                  }};
    const std::vector<Check> checks{checkChannel(channel)};
    pwm.shared(checkChannel);
    pwm.operations({{.name = "PWM_open",
                     .checks = checks,
                     .sends = OPEN_PWM,
                     .fields = {channel | u8},
                     .doc = "Claims a channel."},
                    {.name = "PWM_start",
                     .checks = checks,
                     .sends = START_PWM,
                     .fields = {channel | u8},
                     .doc = "Starts the waveform."},
                    {.name = "PWM_stop",
                     .checks = checks,
                     .sends = STOP_PWM,
                     .fields = {channel | u8},
                     .doc = "Stops the waveform."},
                    {.name = "PWM_close",
                     .checks = checks,
                     .sends = CLOSE_PWM,
                     .fields = {channel | u8},
                     .doc = "Releases a channel."},
                    {.name = "PWM_setFrequency",
                     .checks = checks,
                     .sends = SET_PWM_FREQUENCY,
                     .fields = {channel | u8, frequency | f32},
                     .doc = "Sets the frequency."},
                    {.name = "PWM_setDutyCycle",
                     .checks = checks,
                     .sends = SET_PWM_DUTY_CYCLE,
                     .fields = {channel | u8, dutyCycle | f32},
                     .doc = "Sets the duty cycle."}});
}

}  // namespace zvr::python
