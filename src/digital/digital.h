// Digital lines, PWM outputs, counters and the encoder.
#pragma once

#include "device/feature.h"

namespace zvr::python {

void defineDio(Package& package);
void definePwm(Package& package);
void defineCounter(Package& package);
void defineEncoder(Package& package);

inline void defineDigital(Package& package) {
    defineDio(package);
    definePwm(package);
    defineCounter(package);
    defineEncoder(package);
}

}  // namespace zvr::python
