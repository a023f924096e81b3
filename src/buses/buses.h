// Serial buses: the device is master, node or terminal, controlled by the host.
#pragma once

#include "device/feature.h"

namespace zvr::python {

void defineI2c(Package& package);
void defineSpi(Package& package);
void defineUart(Package& package);
void defineCanFrame(Package& package);
void defineCan(Package& package);

inline void defineBuses(Package& package) {
    defineI2c(package);
    defineSpi(package);
    defineUart(package);
    defineCanFrame(package);
    defineCan(package);
}

}  // namespace zvr::python
