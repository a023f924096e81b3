// Temperature, attitude, relay counters, resistors, and the multimeter.
#pragma once

#include "device/feature.h"

namespace zvr::python {

void defineTemperature(Package& package);
void defineAttitude(Package& package);
void defineRelay(Package& package);
void definePotentiometer(Package& package);
void defineMultimeter(Package& package);

inline void defineSensing(Package& package) {
    defineTemperature(package);
    defineAttitude(package);
    defineRelay(package);
    definePotentiometer(package);
    defineMultimeter(package);
}

}  // namespace zvr::python
