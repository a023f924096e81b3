// Motion: the four-axis controller and the stepper drive.
#pragma once

#include "device/feature.h"

namespace zvr::python {

void defineMotionConstants(Package& package);
void defineMotionRecords(Package& package);
void defineMotionDriver(Package& package);
void defineMotionController(Package& package);
void defineMotionDrive(Package& package);

inline void defineMotion(Package& package) {
    defineMotionConstants(package);
    defineMotionRecords(package);
    defineMotionDriver(package);
    defineMotionController(package);
    defineMotionDrive(package);
}

}  // namespace zvr::python
