// The modules of a model: each function adds the commands of one module to a device.
#pragma once

#include "device/device.h"

namespace zvr::sim {

/// The digital ports of the Wi-Fi models' LEDs (red, green, blue) and power inputs (power good, charging).
constexpr int ledPort = 0, powerPort = 1;

void addSystem(Device& device);
void addNetwork(Device& device);
void addDio(Device& device);
void addSlots(Device& device);
void addAnalogInput(Device& device);
void addAnalogOutput(Device& device);
void addWifi(Device& device);
void addSntp(Device& device);
void addSdCard(Device& device);
void addPwm(Device& device);
void addCounter(Device& device);
void addEncoder(Device& device);
void addI2c(Device& device);
void addSpi(Device& device);
void addUart(Device& device);
void addCan(Device& device);
void addThermocouples(Device& device);
void addResistanceThermometers(Device& device);
void addAttitude(Device& device);
void addRelay(Device& device);
void addPotentiometer(Device& device);
void addDrone(Device& device);
void addMcx514(Device& device);
void addTmc5240(Device& device);

}  // namespace zvr::sim
