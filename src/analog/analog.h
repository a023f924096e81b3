// Analog inputs and outputs, and the data logger.
#pragma once

#include "device/feature.h"

namespace zvr::python {

void completeRowFifo(Package& package);
void defineSampleBlock(Package& package);
void defineSampleStream(Package& package);
void defineAnalogInput(Package& package);
void defineAnalogInput24(Package& package);
void defineAnalogOutput(Package& package);
void defineAnalogOutputStreaming(Package& package);
void defineLogger(Package& package);

inline void defineAnalog(Package& package) {
    completeRowFifo(package);
    defineSampleBlock(package);
    defineSampleStream(package);
    defineAnalogInput(package);
    defineAnalogInput24(package);
    defineAnalogOutput(package);
    defineAnalogOutputStreaming(package);
    defineLogger(package);
}

}  // namespace zvr::python
