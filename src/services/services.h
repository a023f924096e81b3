// The system module, and services: network, radio, clock, card.
#pragma once

#include "device/feature.h"

namespace zvr::python {

void defineSystem(Package& package);
void defineNetwork(Package& package);
void defineWifiSettings(Package& package);
void defineSystemAnalog(Package& package);
void defineSntp(Package& package);
void defineSdCard(Package& package);

inline void defineServices(Package& package) {
    defineSystem(package);
    defineNetwork(package);
    defineWifiSettings(package);
    defineSystemAnalog(package);
    defineSntp(package);
    defineSdCard(package);
}

}  // namespace zvr::python
