// What a model is put together from: each function gives a device the commands of one module.
#pragma once

#include "device.h"

namespace zvr::sim {

void addSystem(Device& device);
void addNetwork(Device& device);
void addDio(Device& device);
void addPwm(Device& device);
void addCounter(Device& device);
void addEncoder(Device& device);
void addDroneIdentity(Device& device);

}  // namespace zvr::sim
